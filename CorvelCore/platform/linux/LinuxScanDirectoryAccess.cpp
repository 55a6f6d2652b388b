// The space scanner's system calls on Linux: getdents64 batches and fstatat relative to open
// directory handles, FIEMAP only where the caller asks (file systems that can share blocks).
#include "space/ScanDirectoryAccess.h"

#include "space/DirentBuffer.h"
#include "space/FiemapReply.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace corvel::ScanDirectoryAccess {
namespace {

constexpr int directoryFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;

DirectoryReader::EntryType typeOf(mode_t mode) {
    if (S_ISDIR(mode)) return DirectoryReader::EntryType::directory;
    if (S_ISREG(mode)) return DirectoryReader::EntryType::regular;
    if (S_ISLNK(mode)) return DirectoryReader::EntryType::symlink;
    return DirectoryReader::EntryType::other;
}

void fill(const struct stat& st, Status& out) {
    out.device = static_cast<std::uint64_t>(st.st_dev);
    out.inode = static_cast<std::uint64_t>(st.st_ino);
    out.linkCount = static_cast<std::uint64_t>(st.st_nlink);
    out.logicalBytes = static_cast<std::int64_t>(st.st_size);
    out.allocatedBytes = static_cast<std::int64_t>(st.st_blocks) * 512;
    out.modifiedNanoseconds = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 +
                              static_cast<std::int64_t>(st.st_mtim.tv_nsec);
    out.type = typeOf(st.st_mode);
}

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

void close(int handle) {
    if (handle >= 0) ::close(handle);
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

bool status(int handle, Status& out, int& error) {
    struct stat st {};
    if (::fstat(handle, &st) != 0) {
        error = errno;
        return false;
    }
    fill(st, out);
    return true;
}

bool statusAt(int directory, const char* name, Status& out, int& error) {
    struct stat st {};
    if (::fstatat(directory, name, &st, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
        error = errno;
        return false;
    }
    fill(st, out);
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
    const int fd = ::openat(directory, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return std::nullopt;
    constexpr std::size_t batchExtents = 64;
    alignas(8) std::byte buffer[FiemapReply::headerBytes + batchExtents * FiemapReply::extentBytes];
    std::uint64_t start = 0;
    bool mappedAny = false;
    for (;;) {
        std::memset(buffer, 0, sizeof buffer);
        struct fiemap request {};
        request.fm_start = start;
        request.fm_length = FIEMAP_MAX_OFFSET - start;
        request.fm_extent_count = batchExtents;
        std::memcpy(buffer, &request, sizeof request);
        if (::ioctl(fd, FS_IOC_FIEMAP, buffer) != 0) break;
        const auto batch = FiemapReply::decode(std::span<const std::byte>(buffer, sizeof buffer));
        if (!batch) break;
        mappedAny = true;
        facts.exclusiveBytes += FiemapReply::exclusiveBytes(batch->extents);
        if (facts.firstPhysicalOffset < 0) {
            const auto ranges = FiemapReply::physicalRanges(batch->extents);
            if (!ranges.empty()) facts.firstPhysicalOffset = ranges.front().lower;
        }
        const auto next = FiemapReply::nextStart(*batch, start);
        if (!next) break;
        start = *next;
    }
    ::close(fd);
    if (!mappedAny) return std::nullopt;
    return facts;
}

std::optional<Status> statusOfPath(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return std::nullopt;
    Status out;
    fill(st, out);
    return out;
}

bool isAccessDenied(int error) { return error == EACCES || error == EPERM; }

bool isVanished(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

std::string errorText(int error) { return std::strerror(error); }

void raiseOpenFileLimit() {
    struct rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    if (limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace corvel::ScanDirectoryAccess
