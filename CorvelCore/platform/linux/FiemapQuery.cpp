#include "platform/linux/FiemapQuery.h"

#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

namespace corvel::FiemapQuery {
namespace {

static_assert(FiemapReply::headerBytes == sizeof(struct fiemap));
static_assert(FiemapReply::extentBytes == sizeof(struct fiemap_extent));
static_assert(FiemapReply::mappedExtentsOffset == offsetof(struct fiemap, fm_mapped_extents));
static_assert(FiemapReply::extentCountOffset == offsetof(struct fiemap, fm_extent_count));
static_assert(FiemapReply::flagShared == FIEMAP_EXTENT_SHARED);
static_assert(FiemapReply::flagLast == FIEMAP_EXTENT_LAST);
static_assert(FiemapReply::flagUnknown == FIEMAP_EXTENT_UNKNOWN);
static_assert(FiemapReply::flagInline == FIEMAP_EXTENT_DATA_INLINE);

// Most files fit one batch; a fragmented one takes a few more calls.
constexpr std::uint32_t batchExtents = 128;
constexpr std::size_t bufferBytes = FiemapReply::headerBytes + batchExtents * FiemapReply::extentBytes;

}  // namespace

std::optional<std::vector<FiemapExtent>> extents(int fd, Mode mode) {
    // 8-byte aligned storage for struct fiemap, on the stack: the scanner calls this per file.
    alignas(8) std::byte buffer[bufferBytes];
    std::vector<FiemapExtent> result;
    std::uint64_t start = 0;
    for (bool first = true;; first = false) {
        std::memset(buffer, 0, sizeof buffer);
        // Field by field rather than through a `struct fiemap` value, whose flexible extent array
        // is an extension some compilers refuse to let us declare.
        const std::uint64_t length = FIEMAP_MAX_OFFSET - start;
        const std::uint32_t flags = mode == Mode::syncFirst ? FIEMAP_FLAG_SYNC : 0;
        std::memcpy(buffer + offsetof(struct fiemap, fm_start), &start, sizeof start);
        std::memcpy(buffer + offsetof(struct fiemap, fm_length), &length, sizeof length);
        std::memcpy(buffer + offsetof(struct fiemap, fm_flags), &flags, sizeof flags);
        std::memcpy(buffer + offsetof(struct fiemap, fm_extent_count), &batchExtents, sizeof batchExtents);
        if (::ioctl(fd, FS_IOC_FIEMAP, buffer) != 0) {
            if (first) return std::nullopt;
            break;
        }
        const auto batch = FiemapReply::decode(std::span<const std::byte>(buffer, sizeof buffer));
        if (!batch) {
            if (first) return std::nullopt;
            break;
        }
        result.insert(result.end(), batch->extents.begin(), batch->extents.end());
        const auto next = FiemapReply::nextStart(*batch, start);
        if (!next) break;
        start = *next;
    }
    return result;
}

}  // namespace corvel::FiemapQuery
