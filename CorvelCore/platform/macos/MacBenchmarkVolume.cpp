// The benchmark's file on macOS: created, removed at once (the descriptor keeps it alive), and
// F_NOCACHE so that reads and writes bypass the unified buffer cache.
#include "benchmark/BenchmarkVolume.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace corvel::BenchmarkVolume {

BenchmarkVolumeFacts inspect(const std::string& folder) {
    char resolved[PATH_MAX];
    if (::realpath(folder.c_str(), resolved) == nullptr) throw BenchmarkError(folder + ": " + std::strerror(errno));
    struct stat status {};
    if (::stat(resolved, &status) != 0 || !S_ISDIR(status.st_mode)) throw BenchmarkError(folder + ": not a folder");
    struct statfs figures {};
    if (::statfs(resolved, &figures) != 0) throw BenchmarkError(folder + ": " + std::strerror(errno));
    BenchmarkVolumeFacts facts;
    facts.mountPoint = figures.f_mntonname;
    facts.fileSystemType = figures.f_fstypename;
    facts.deviceID = std::to_string(status.st_dev);
    facts.isReadOnly = (figures.f_flags & MNT_RDONLY) != 0;
    facts.totalBytes = static_cast<std::int64_t>(figures.f_blocks) * static_cast<std::int64_t>(figures.f_bsize);
    facts.availableBytes = static_cast<std::int64_t>(figures.f_bavail) * static_cast<std::int64_t>(figures.f_bsize);
    return facts;
}

TemporaryFile openTemporary(const std::string& folder) {
    std::string path = folder + "/.velmora-benchmark-XXXXXX";
    const int fd = ::mkstemp(path.data());
    if (fd < 0) throw BenchmarkError(folder + ": cannot create the benchmark file: " + std::strerror(errno));
    ::unlink(path.c_str());
    TemporaryFile file;
    file.fd.reset(fd);
    file.isCacheBypassed = ::fcntl(fd, F_NOCACHE, 1) == 0;
    if (!file.isCacheBypassed) file.notes.push_back("this file system refused to bypass its cache");
    return file;
}

}  // namespace corvel::BenchmarkVolume
