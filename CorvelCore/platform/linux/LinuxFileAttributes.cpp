// FileAttributes on Linux: statx for the size facts, the FIEMAP ioctl for extents. Only the
// system calls live here; FiemapReply decodes what the kernel writes.
#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
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
#include "space/BlockSharing.h"
#include "space/FiemapReply.h"
#include "space/FileAttributes.h"

namespace corvel {

namespace {

static_assert(FiemapReply::headerBytes == sizeof(struct fiemap));
static_assert(FiemapReply::extentBytes == sizeof(struct fiemap_extent));
static_assert(FiemapReply::mappedExtentsOffset == offsetof(struct fiemap, fm_mapped_extents));
static_assert(FiemapReply::extentCountOffset == offsetof(struct fiemap, fm_extent_count));
static_assert(FiemapReply::flagShared == FIEMAP_EXTENT_SHARED);
static_assert(FiemapReply::flagLast == FIEMAP_EXTENT_LAST);
static_assert(FiemapReply::flagUnknown == FIEMAP_EXTENT_UNKNOWN);
static_assert(FiemapReply::flagInline == FIEMAP_EXTENT_DATA_INLINE);

// The kernel's 32-bit device encoding (new_encode_dev), so that devices fit FileSizeFacts.
std::int32_t encodeDevice(unsigned int major, unsigned int minor) {
    const std::uint32_t encoded = (minor & 0xFFu) | (major << 8) | ((minor & ~0xFFu) << 12);
    return std::bit_cast<std::int32_t>(encoded);
}

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }

private:
    int fd_;
};

// O_NONBLOCK keeps a FIFO that replaced a file between listing and opening from blocking us.
int openForExtents(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

// Every extent of the file, asked for in batches. FIEMAP_FLAG_SYNC writes delayed allocations
// out first, so freshly written data has real device offsets instead of "unknown".
std::optional<std::vector<FiemapExtent>> queryExtents(int fd) {
    constexpr std::uint32_t batchExtents = 256;
    constexpr std::size_t bufferBytes = FiemapReply::headerBytes + batchExtents * FiemapReply::extentBytes;
    std::vector<std::uint64_t> storage(bufferBytes / sizeof(std::uint64_t));
    std::vector<FiemapExtent> extents;
    std::uint64_t start = 0;
    for (bool first = true;; first = false) {
        std::fill(storage.begin(), storage.end(), 0);
        auto* request = reinterpret_cast<struct fiemap*>(storage.data());
        request->fm_start = start;
        request->fm_length = FIEMAP_MAX_OFFSET - start;
        request->fm_flags = FIEMAP_FLAG_SYNC;
        request->fm_extent_count = batchExtents;
        if (ioctl(fd, FS_IOC_FIEMAP, request) != 0) {
            if (first) return std::nullopt;
            break;
        }
        const auto batch = FiemapReply::decode(std::as_bytes(std::span(storage)));
        if (!batch) {
            if (first) return std::nullopt;
            break;
        }
        extents.insert(extents.end(), batch->extents.begin(), batch->extents.end());
        const auto next = FiemapReply::nextStart(*batch, start);
        if (!next) break;
        start = *next;
    }
    return extents;
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
    FileDescriptor fd(openForExtents(path));
    if (fd.get() < 0) return std::nullopt;
    const auto extents = queryExtents(fd.get());
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
    FileDescriptor fd(openForExtents(path));
    if (fd.get() < 0) return std::nullopt;
    const auto extents = queryExtents(fd.get());
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
