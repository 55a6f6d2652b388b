// Decodes the reply buffer of macOS getattrlist() for the attributes that make up
// FileSizeFacts. Pure, so that it is tested on synthetic buffers on any platform; the call itself
// lives in the macOS platform layer, which asks for exactly `requested` below.
//
// Reply layout (machine byte order, every attribute aligned to 4 bytes):
//   u32 length of the reply, attribute_set_t of the returned attributes (5 × u32: common,
//   volume, directory, file, fork — the fork slot carries the extended common group when
//   FSOPT_ATTR_CMN_EXTENDED is set), then each returned attribute in group and bit order:
//   device id (i32), modification time (i64 seconds, i64 nanoseconds), file id (u64),
//   link count (u32), total size, allocated size, private size (i64 each).
// Attributes the file system did not return take no space and keep the record's defaults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "space/AttributeBits.h"
#include "space/FileSizeFacts.h"

namespace corvel::AttributeListReply {

// The bit values, spelled out once for both attribute decoders.
using namespace AttributeBits;

// What the platform layer asks for, group by group.
inline constexpr std::uint32_t requestedCommon =
    commonReturnedAttributes | commonDeviceID | commonModificationTime | commonFileID;
inline constexpr std::uint32_t requestedFile = fileLinkCount | fileTotalSize | fileAllocatedSize;
inline constexpr std::uint32_t requestedExtended = extendedPrivateSize;

// The reply buffer size the platform layer passes.
inline constexpr std::size_t bufferBytes = 256;

// Absent when the reply is shorter than its header, shorter than the attributes it claims to
// hold, or claims attributes that were never requested (their sizes would be unknown).
std::optional<FileSizeFacts> decode(std::span<const std::byte> reply);

}  // namespace corvel::AttributeListReply
