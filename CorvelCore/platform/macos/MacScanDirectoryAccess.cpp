// The space scanner's system calls on macOS: getattrlistbulk lists a batch of entries with their
// types and sizes in one call on a handle opened relative to the parent folder (decoded by
// space/BulkAttributeRecords); fstatat is left for the rare entry it could not describe.
// Clone facts are not asked for here, so every allocated block counts as the file's own. Closing
// handles, the status of a handle or a path and sorting error numbers are shared with Linux in
// platform/posix/PosixScanDirectoryAccess.cpp.
#include "space/ScanDirectoryAccess.h"

#include "platform/posix/PosixStatus.h"
#include "space/BulkAttributeRecords.h"

#include <fcntl.h>
#include <sys/attr.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

namespace corvel::PosixStatus {

// Darwin's struct stat names the modification time st_mtimespec.
const struct timespec& modifiedTime(const struct stat& st) {
    return st.st_mtimespec;
}

}  // namespace corvel::PosixStatus

namespace corvel::ScanDirectoryAccess {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

}  // namespace

int openDirectory(const std::string& path, int& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) error = errno;
    return fd;
}

int openDirectoryAt(int directory, const char* name, int& error) {
    const int fd = ::openat(directory, name, directoryFlags);
    if (fd < 0) error = errno;
    return fd;
}

bool readBatch(int directory, std::span<std::byte> buffer, std::vector<Entry>& entries, int& error) {
    entries.clear();
    struct attrlist request {};
    request.bitmapcount = ATTR_BIT_MAP_COUNT;
    request.commonattr = BulkAttributeRecords::requestedCommon;
    request.fileattr = BulkAttributeRecords::requestedFile;
    for (;;) {
        const int count = ::getattrlistbulk(directory, &request, buffer.data(), buffer.size(), 0);
        if (count < 0) {
            if (errno == EINTR) continue;
            error = errno;
            return false;
        }
        if (count == 0) return true;
        if (!BulkAttributeRecords::decode(buffer, count, entries)) {
            error = EIO;  // a reply we cannot read is a folder we could not list
            return false;
        }
        if (!entries.empty()) return true;
    }
}

bool status(int handle, Status& out, int& error) {
    struct stat st {};
    if (::fstat(handle, &st) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);  // no bind mounts: the device tells mounts apart
    return true;
}

bool statusAt(int directory, const char* name, Status& out, int& error) {
    struct stat st {};
    if (::fstatat(directory, name, &st, AT_SYMLINK_NOFOLLOW) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);
    return true;
}

std::uint64_t fileSystemMagic(int) {
    return 0;
}

std::optional<CloneFacts> cloneFactsAt(int, const char*, std::int64_t) {
    return std::nullopt;
}

void raiseOpenFileLimit() {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    const rlim_t wanted = limit.rlim_max == RLIM_INFINITY ? 10240 : limit.rlim_max;
    if (limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace corvel::ScanDirectoryAccess
