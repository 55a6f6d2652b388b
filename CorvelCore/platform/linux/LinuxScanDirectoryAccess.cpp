// The space scanner's system calls on Linux: getdents64 batches and fstatat relative to open
// directory handles, FIEMAP only where the caller asks (file systems that can share blocks).
// Closing handles, the status of a handle or a path and sorting error numbers are shared with
// macOS in platform/posix/PosixScanDirectoryAccess.cpp.
#include "space/ScanDirectoryAccess.h"

#include "common/UniqueFd.h"
#include "platform/linux/FiemapQuery.h"
#include "platform/posix/PosixStatus.h"
#include "space/DirentBuffer.h"
#include "space/FiemapReply.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>

namespace corvel::PosixStatus {

// Linux keeps the POSIX name for the modification time.
const struct timespec& modifiedTime(const struct stat& st) {
    return st.st_mtim;
}

}  // namespace corvel::PosixStatus

namespace corvel::ScanDirectoryAccess {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;

}  // namespace

int openDirectory(const std::string& path, int& error) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
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
    for (;;) {
        const long count = ::syscall(SYS_getdents64, directory, buffer.data(), buffer.size());
        if (count < 0) {
            if (errno == EINTR) continue;
            error = errno;
            return false;
        }
        if (count == 0) return true;
        if (!DirentBuffer::decode(buffer.first(static_cast<std::size_t>(count)), entries)) {
            error = EIO;
            return false;
        }
        // A batch of only "." and ".." is not the end of the listing.
        if (!entries.empty()) return true;
    }
}

// statx rather than fstat for the mount ID: a bind mount of a folder of the same device is a
// mount point all the same. Kernels before 5.8 leave the mask bit unset; the device then stands in.
bool status(int handle, Status& out, int& error) {
    struct statx st {};
    constexpr unsigned int mask = STATX_BASIC_STATS | STATX_MNT_ID;
    if (::statx(handle, "", AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW, mask, &st) != 0) {
        error = errno;
        return false;
    }
    out.device = static_cast<std::uint64_t>(makedev(st.stx_dev_major, st.stx_dev_minor));
    out.inode = st.stx_ino;
    out.linkCount = st.stx_nlink;
    out.logicalBytes = static_cast<std::int64_t>(std::min<std::uint64_t>(st.stx_size, INT64_MAX));
    out.allocatedBytes = static_cast<std::int64_t>(std::min<std::uint64_t>(st.stx_blocks, INT64_MAX / 512)) * 512;
    out.modifiedNanoseconds = nanosecondsSince1970(st.stx_mtime.tv_sec, st.stx_mtime.tv_nsec);
    out.type = PosixStatus::typeOf(static_cast<mode_t>(st.stx_mode));
    out.mountID = (st.stx_mask & STATX_MNT_ID) ? st.stx_mnt_id : out.device;
    return true;
}

bool statusAt(int directory, const char* name, Status& out, int& error) {
    struct stat st {};
    if (::fstatat(directory, name, &st, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
        error = errno;
        return false;
    }
    PosixStatus::fill(st, out);
    return true;
}

std::uint64_t fileSystemMagic(int handle) {
    struct statfs info {};
    if (::fstatfs(handle, &info) != 0) return 0;
    return static_cast<std::uint64_t>(info.f_type);
}

std::optional<CloneFacts> cloneFactsAt(int directory, const char* name, std::int64_t logicalBytes) {
    CloneFacts facts;
    if (logicalBytes < 1) return facts;
    const UniqueFd fd(::openat(directory, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!fd) return std::nullopt;
    const auto extents = FiemapQuery::extents(fd.get(), FiemapQuery::Mode::plain);
    if (!extents) return std::nullopt;
    facts.exclusiveBytes = FiemapReply::exclusiveBytes(*extents);
    const auto ranges = FiemapReply::physicalRanges(*extents);
    if (!ranges.empty()) facts.firstPhysicalOffset = ranges.front().lower;
    return facts;
}

void raiseOpenFileLimit() {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    if (limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace corvel::ScanDirectoryAccess
