// FileAttributes on Linux: statx for the size facts, the FIEMAP ioctl for extents. Only the
// system calls live here; FiemapReply decodes what the kernel writes.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
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
int openForExtents(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

std::int64_t allocatedBytesOf(std::uint64_t blocks) {
    // st_blocks is in 512-byte units whatever the file system's block size.
    const auto capped = std::min<std::uint64_t>(blocks, std::numeric_limits<std::int64_t>::max());
    return checkedMultiply(static_cast<std::int64_t>(capped), 512);
}

// What deleting the regular file at `path` would free, or absent when its extents cannot be read
// on a file system that shares blocks.
std::optional<std::int64_t> exclusiveBytesOf(const std::string& path, std::int64_t allocated) {
    struct statfs fileSystem {};
    if (statfs(path.c_str(), &fileSystem) != 0) return std::nullopt;
    if (!BlockSharing::canShareBlocks(static_cast<std::uint64_t>(fileSystem.f_type))) return allocated;
    if (allocated == 0) return 0;
    UniqueFd fd(openForExtents(path));
    if (fd.get() < 0) return std::nullopt;
    const auto extents = FiemapQuery::extents(fd.get(), FiemapQuery::Mode::syncFirst);
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

std::optional<FileSizeFacts> FileAttributes::facts(const std::string& path) {
    struct statx result {};
    constexpr unsigned int mask = STATX_TYPE | STATX_NLINK | STATX_INO | STATX_SIZE | STATX_BLOCKS | STATX_MTIME;
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, mask, &result) != 0) return std::nullopt;
    FileSizeFacts facts;
    facts.device = encodeDevice(result.stx_dev_major, result.stx_dev_minor);
    if (result.stx_mask & STATX_INO) facts.fileID = result.stx_ino;
    if (result.stx_mask & STATX_NLINK) facts.linkCount = result.stx_nlink;
    if (result.stx_mask & STATX_MTIME) facts.modified = fileTime(result.stx_mtime.tv_sec, result.stx_mtime.tv_nsec);
    if (result.stx_mask & STATX_SIZE)
        facts.logicalBytes = static_cast<std::int64_t>(
            std::min<std::uint64_t>(result.stx_size, std::numeric_limits<std::int64_t>::max()));
    if (result.stx_mask & STATX_BLOCKS) facts.allocatedBytes = allocatedBytesOf(result.stx_blocks);
    if ((result.stx_mask & STATX_TYPE) && S_ISREG(result.stx_mode))
        facts.exclusiveBytes = exclusiveBytesOf(path, facts.allocatedBytes);
    return facts;
}

std::optional<std::vector<ExtentRange>> FileAttributes::physicalExtents(const std::string& path,
                                                                        std::int64_t logicalSize) {
    if (logicalSize < 1) return std::vector<ExtentRange>{};
    UniqueFd fd(openForExtents(path));
    if (fd.get() < 0) return std::nullopt;
    const auto extents = FiemapQuery::extents(fd.get(), FiemapQuery::Mode::syncFirst);
    if (!extents) return std::nullopt;
    return FiemapReply::physicalRanges(*extents);
}

std::optional<PathStatus> FileAttributes::status(const std::string& path) {
    struct stat result {};
    if (lstat(path.c_str(), &result) != 0) return std::nullopt;
    return PathStatus{typeOf(result.st_mode), encodeDevice(major(result.st_dev), minor(result.st_dev)),
                      allocatedBytesOf(static_cast<std::uint64_t>(result.st_blocks))};
}

}  // namespace corvel
