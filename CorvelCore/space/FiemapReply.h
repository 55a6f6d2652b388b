// Decodes what the Linux FIEMAP ioctl writes into its buffer: a 32-byte header followed by
// 56-byte extent records, all in the machine's byte order. Pure, so that it is tested on
// synthetic buffers; the ioctl itself lives in the Linux platform layer.
//
//   auto batch = FiemapReply::decode(std::as_bytes(std::span(buffer)));
//   if (batch) { ranges = FiemapReply::physicalRanges(batch->extents); }
//
// An extent flagged shared is what clones (reflinks) share, so the bytes a file holds alone
// are the sum of its unshared extents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "space/ExtentUnion.h"

namespace corvel {

struct FiemapExtent {
    std::uint64_t logical = 0;   // offset in the file
    std::uint64_t physical = 0;  // offset on the device
    std::uint64_t length = 0;
    std::uint32_t flags = 0;

    bool operator==(const FiemapExtent&) const = default;
};

namespace FiemapReply {

// Layout of struct fiemap and struct fiemap_extent (a fixed kernel ABI).
inline constexpr std::size_t headerBytes = 32;
inline constexpr std::size_t extentBytes = 56;
inline constexpr std::size_t mappedExtentsOffset = 20;  // fm_mapped_extents
inline constexpr std::size_t extentCountOffset = 24;    // fm_extent_count

// FIEMAP_EXTENT_* flags.
inline constexpr std::uint32_t flagLast = 0x00000001;
inline constexpr std::uint32_t flagUnknown = 0x00000002;  // location not known yet
inline constexpr std::uint32_t flagDelayedAllocation = 0x00000004;
inline constexpr std::uint32_t flagEncoded = 0x00000008;
inline constexpr std::uint32_t flagInline = 0x00000200;  // data lives inside metadata
inline constexpr std::uint32_t flagUnwritten = 0x00000800;
inline constexpr std::uint32_t flagShared = 0x00002000;

struct Batch {
    std::vector<FiemapExtent> extents;
    bool isLast = false;  // the final extent of the file is among them

    bool operator==(const Batch&) const = default;
};

// Absent when the buffer is shorter than its header, when the header claims more mapped
// extents than it had room for, or when the buffer does not hold every mapped extent.
std::optional<Batch> decode(std::span<const std::byte> buffer);

// Where the next query should start, or absent when the file has been mapped completely
// (the last extent was seen, nothing was mapped, or the extents did not move past `start`).
std::optional<std::uint64_t> nextStart(const Batch& batch, std::uint64_t start);

// Closed device ranges of the extents that have their own place on the device: extents whose
// location is unknown (delayed allocation) or that are stored inline in metadata are left out,
// as is any extent that does not end before the largest signed 64-bit offset.
std::vector<ExtentRange> physicalRanges(std::span<const FiemapExtent> extents);

// Bytes of the extents not flagged shared: what deleting the file would free. Extents reaching
// past the largest file offset are left out and the sum stops at the largest signed value, so a
// corrupt reply never aborts the caller.
std::int64_t exclusiveBytes(std::span<const FiemapExtent> extents);

}  // namespace FiemapReply
}  // namespace corvel
