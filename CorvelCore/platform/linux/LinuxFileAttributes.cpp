// FileAttributes on Linux: statx for the size facts, the FIEMAP ioctl for extents. Only the
// system calls live here; FiemapReply decodes what the kernel writes.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>

#include "common/CheckedArithmetic.h"
#include "common/UniqueFd.h"
#include "platform/linux/FiemapQuery.h"
#include "space/BlockSharing.h"
#include "space/FiemapReply.h"
#include "space/FileAttributes.h"

namespace corvel {

namespace {

// The kernel's 32-bit device encoding (new_encode_dev), so that devices fit FileSizeFacts.
std::int32_t encodeDevice(unsigned int major, unsigned int minor) {
    const std::uint32_t encoded = (minor & 0xFFu) | (major << 8) | ((minor & ~0xFFu) << 12);
    return std::bit_cast<std::int32_t>(encoded);
}

// O_NONBLOCK keeps a FIFO that replaced a file between listing and opening from blocking us.
int openForExtents(int directory, const std::string& name) {
    return openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

std::int64_t allocatedBytesOf(std::uint64_t blocks) {
    // st_blocks is in 512-byte units whatever the file system's block size.
    const auto capped = std::min<std::uint64_t>(blocks, std::numeric_limits<std::int64_t>::max() / 512);
    return checkedMultiply(static_cast<std::int64_t>(capped), 512);
}

// The extents of an open file, with the reason when there are none.
std::optional<std::vector<FiemapExtent>> extentsOf(int fd, int& error) {
    errno = 0;
    auto extents = FiemapQuery::extents(fd, FiemapQuery::Mode::syncFirst);
    if (!extents) error = errno != 0 ? errno : EIO;  // no errno: a reply that could not be decoded
    return extents;
}

// What deleting the regular file `name` of `directory` would free, or absent when its extents
// cannot be read on a file system that shares blocks.
std::optional<std::int64_t> exclusiveBytesOf(int directory, const std::string& name, std::int64_t allocated,
                                             int& error) {
    // The file lies on its folder's file system (a bind-mounted single file aside), which spares
    // opening every file on the many file systems that cannot share blocks.
    struct statfs fileSystem {};
    const int found = directory == AT_FDCWD ? statfs(name.c_str(), &fileSystem) : fstatfs(directory, &fileSystem);
    if (found != 0) {
        error = errno;
        return std::nullopt;
    }
    if (!BlockSharing::canShareBlocks(static_cast<std::uint64_t>(fileSystem.f_type))) return allocated;
    if (allocated == 0) return 0;
    UniqueFd fd(openForExtents(directory, name));
    if (fd.get() < 0) {
        error = errno;
        return std::nullopt;
    }
    const auto extents = extentsOf(fd.get(), error);
    if (!extents) return std::nullopt;
    // Extent lengths and st_blocks can disagree by metadata blocks; never claim more than the
    // file holds.
    return std::min(FiemapReply::exclusiveBytes(*extents), allocated);
}

DirectoryReader::EntryType typeOf(mode_t mode) {
    if (S_ISDIR(mode)) return DirectoryReader::EntryType::directory;
    if (S_ISREG(mode)) return DirectoryReader::EntryType::regular;
    if (S_ISLNK(mode)) return DirectoryReader::EntryType::symlink;
    return DirectoryReader::EntryType::other;
}

}  // namespace

std::optional<FileSizeFacts> FileAttributes::factsAt(int directory, const std::string& name, int& error) {
    struct statx result {};
    constexpr unsigned int mask = STATX_TYPE | STATX_NLINK | STATX_INO | STATX_SIZE | STATX_BLOCKS | STATX_MTIME;
    if (statx(directory, name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, mask, &result) != 0) {
        error = errno;
        return std::nullopt;
    }
    FileSizeFacts facts;
    facts.device = encodeDevice(result.stx_dev_major, result.stx_dev_minor);
    if (result.stx_mask & STATX_INO) facts.fileID = result.stx_ino;
    if (result.stx_mask & STATX_NLINK) facts.linkCount = result.stx_nlink;
    if (result.stx_mask & STATX_MTIME) facts.modified = fileTime(result.stx_mtime.tv_sec, result.stx_mtime.tv_nsec);
    if (result.stx_mask & STATX_SIZE)
        facts.logicalBytes = static_cast<std::int64_t>(
            std::min<std::uint64_t>(result.stx_size, std::numeric_limits<std::int64_t>::max()));
    if (result.stx_mask & STATX_BLOCKS) facts.allocatedBytes = allocatedBytesOf(result.stx_blocks);
    if ((result.stx_mask & STATX_TYPE) && S_ISREG(result.stx_mode)) {
        int ignored = 0;  // facts without the private size are still facts
        facts.exclusiveBytes = exclusiveBytesOf(directory, name, facts.allocatedBytes, ignored);
    }
    return facts;
}

std::optional<std::vector<ExtentRange>> FileAttributes::physicalExtentsAt(int directory, const std::string& name,
                                                                          std::int64_t logicalSize, int& error) {
    if (logicalSize < 1) return std::vector<ExtentRange>{};
    UniqueFd fd(openForExtents(directory, name));
    if (fd.get() < 0) {
        error = errno;
        return std::nullopt;
    }
    const auto extents = extentsOf(fd.get(), error);
    if (!extents) return std::nullopt;
    return FiemapReply::physicalRanges(*extents);
}

std::optional<FileSizeFacts> FileAttributes::facts(const std::string& path) {
    int ignored = 0;
    return factsAt(AT_FDCWD, path, ignored);
}

std::optional<std::vector<ExtentRange>> FileAttributes::physicalExtents(const std::string& path,
                                                                        std::int64_t logicalSize) {
    int ignored = 0;
    return physicalExtentsAt(AT_FDCWD, path, logicalSize, ignored);
}

std::optional<PathStatus> FileAttributes::status(const std::string& path) {
    struct stat result {};
    if (lstat(path.c_str(), &result) != 0) return std::nullopt;
    return PathStatus{typeOf(result.st_mode), static_cast<std::uint64_t>(result.st_dev),
                      allocatedBytesOf(static_cast<std::uint64_t>(result.st_blocks)), 0};
}

}  // namespace corvel
