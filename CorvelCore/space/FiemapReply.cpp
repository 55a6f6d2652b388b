#include "space/FiemapReply.h"

#include <cstring>
#include <limits>


namespace corvel::FiemapReply {

namespace {

template <class T>
T readAt(std::span<const std::byte> buffer, std::size_t offset) {
    T value{};
    std::memcpy(&value, buffer.data() + offset, sizeof value);
    return value;
}

constexpr auto maxOffset = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

}  // namespace

std::optional<Batch> decode(std::span<const std::byte> buffer) {
    if (buffer.size() < headerBytes) return std::nullopt;
    const auto mapped = readAt<std::uint32_t>(buffer, mappedExtentsOffset);
    const auto capacity = readAt<std::uint32_t>(buffer, extentCountOffset);
    if (mapped > capacity) return std::nullopt;
    if ((buffer.size() - headerBytes) / extentBytes < mapped) return std::nullopt;

    Batch batch;
    batch.extents.reserve(mapped);
    for (std::uint32_t i = 0; i < mapped; ++i) {
        const std::size_t base = headerBytes + i * extentBytes;
        FiemapExtent extent;
        extent.logical = readAt<std::uint64_t>(buffer, base + 0);
        extent.physical = readAt<std::uint64_t>(buffer, base + 8);
        extent.length = readAt<std::uint64_t>(buffer, base + 16);
        extent.flags = readAt<std::uint32_t>(buffer, base + 40);  // after two reserved u64
        if (extent.flags & flagLast) batch.isLast = true;
        batch.extents.push_back(extent);
    }
    return batch;
}

std::optional<std::uint64_t> nextStart(const Batch& batch, std::uint64_t start) {
    if (batch.isLast || batch.extents.empty()) return std::nullopt;
    const FiemapExtent& last = batch.extents.back();
    if (last.length > std::numeric_limits<std::uint64_t>::max() - last.logical) return std::nullopt;
    const std::uint64_t end = last.logical + last.length;
    // A reply that does not advance would make the caller ask the same question forever.
    if (end <= start) return std::nullopt;
    return end;
}

std::vector<ExtentRange> physicalRanges(std::span<const FiemapExtent> extents) {
    std::vector<ExtentRange> ranges;
    ranges.reserve(extents.size());
    for (const FiemapExtent& extent : extents) {
        if (extent.flags & (flagUnknown | flagDelayedAllocation | flagInline)) continue;
        // The range must end before the largest device offset, so that summing ranges that cover
        // the whole device cannot overflow either.
        if (extent.length == 0 || extent.physical > maxOffset || extent.length > maxOffset - extent.physical)
            continue;
        const auto lower = static_cast<std::int64_t>(extent.physical);
        ranges.push_back({lower, lower + static_cast<std::int64_t>(extent.length - 1)});
    }
    return ranges;
}

std::int64_t exclusiveBytes(std::span<const FiemapExtent> extents) {
    std::uint64_t total = 0;
    for (const FiemapExtent& extent : extents) {
        if (extent.flags & flagShared) continue;
        // No file reaches past the largest signed offset: such an extent is a corrupt reply.
        if (extent.logical > maxOffset || extent.length > maxOffset - extent.logical) continue;
        // Overlapping extents of a corrupt reply can still add up past what a file can hold.
        total = extent.length > maxOffset - total ? maxOffset : total + extent.length;
    }
    return static_cast<std::int64_t>(total);
}

}  // namespace corvel::FiemapReply
