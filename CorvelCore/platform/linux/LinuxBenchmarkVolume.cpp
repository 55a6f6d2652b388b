// The benchmark's file on Linux: O_TMPFILE so that the file never has a name, O_DIRECT so that
// reads come from the device and not the page cache; each falls back with a note where the file
// system refuses it (tmpfs, some FUSE and network file systems).
#include "benchmark/BenchmarkVolume.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>

namespace corvel::BenchmarkVolume {
namespace {

std::string errorText(int error) {
    return std::strerror(error);
}

}  // namespace

BenchmarkVolumeFacts inspect(const std::string& folder) {
    char resolved[PATH_MAX];
    if (::realpath(folder.c_str(), resolved) == nullptr) throw BenchmarkError(folder + ": " + errorText(errno));
    struct stat status {};
    if (::stat(resolved, &status) != 0) throw BenchmarkError(folder + ": " + errorText(errno));
    if (!S_ISDIR(status.st_mode)) throw BenchmarkError(folder + ": not a folder");
    struct statvfs figures {};
    if (::statvfs(resolved, &figures) != 0) throw BenchmarkError(folder + ": " + errorText(errno));

    BenchmarkVolumeFacts facts;
    facts.deviceID = std::to_string(major(status.st_dev)) + ":" + std::to_string(minor(status.st_dev));
    facts.mountPoint = resolved;
    facts.isReadOnly = (figures.f_flag & ST_RDONLY) != 0;
    facts.totalBytes = static_cast<std::int64_t>(figures.f_blocks * figures.f_frsize);
    facts.availableBytes = static_cast<std::int64_t>(figures.f_bavail * figures.f_frsize);
    std::ifstream file("/proc/self/mountinfo");
    std::ostringstream text;
    text << file.rdbuf();
    if (auto mount = mountHolding(MountInfoEntry::parse(text.str()), resolved, facts.deviceID)) {
        facts.mountPoint = mount->mountPoint;
        facts.fileSystemType = mount->fileSystemType;
        facts.isReadOnly = facts.isReadOnly || mount->isReadOnly();
    }
    return facts;
}

TemporaryFile openTemporary(const std::string& folder) {
    TemporaryFile file;
    int fd = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_DIRECT | O_CLOEXEC, 0600);
    if (fd >= 0) {
        file.isCacheBypassed = file.isNameless = true;
    } else {
        fd = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        if (fd >= 0) file.isNameless = true;
    }
    if (fd < 0) {
        // No O_TMPFILE here: a name that is removed at once, keeping only the descriptor.
        file.notes.push_back("this file system has no nameless files: the file was named and removed at once");
        std::random_device random;
        for (int attempt = 0; attempt < 16 && fd < 0; ++attempt) {
            const std::string path = folder + "/.velmora-benchmark-" + std::to_string(random());
            fd = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_DIRECT | O_CLOEXEC, 0600);
            if (fd >= 0) {
                file.isCacheBypassed = true;
            } else if (errno == EINVAL) {
                fd = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
            }
            if (fd >= 0)
                ::unlink(path.c_str());
            else if (errno != EEXIST)
                break;
        }
    }
    if (fd < 0) throw BenchmarkError(folder + ": cannot create the benchmark file: " + errorText(errno));
    file.fd.reset(fd);
    if (!file.isCacheBypassed) file.notes.push_back("this file system refused direct I/O: figures include its cache");
    return file;
}

}  // namespace corvel::BenchmarkVolume
