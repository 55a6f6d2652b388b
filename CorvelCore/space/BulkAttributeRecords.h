// Decodes the buffer macOS getattrlistbulk fills: one record per directory entry with its name,
// type and the sizes the scanner needs, so that listing a folder is one call for a batch of
// entries instead of one call per entry. Pure, so that it is tested on hand-built buffers on any
// platform; the call itself lives in platform/macos and asks for exactly the sets below.
//
// Record layout (machine byte order, every attribute padded to 4 bytes): u32 record length, the
// returned attribute_set_t (5 × u32: common, volume, directory, file, fork), the error number if
// returned (the kernel packs it first), then the common attributes in bit order — the name as a
// reference (i32 offset from the reference itself, u32 length with the NUL), device id (i32),
// object type (u32), modification time (i64 seconds, i64 nanoseconds), file id (u64) — then the
// file attributes: link count (u32), total size, allocated size (i64 each). Folders carry no file
// attributes; an attribute the file system did not return takes no space.
//
//   std::vector<ScanDirectoryAccess::Entry> entries;
//   if (!BulkAttributeRecords::decode(buffer.first(used), count, entries)) { /* malformed */ }
//   for (auto& entry : entries) if (entry.status) { /* no fstatat needed */ }
#pragma once

#include "space/AttributeBits.h"
#include "space/ScanDirectoryAccess.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace corvel::BulkAttributeRecords {

// The bit values, spelled out once for both attribute decoders.
using namespace AttributeBits;

inline constexpr std::uint32_t requestedCommon = commonReturnedAttributes | commonError | commonName | commonDeviceID |
                                                 commonObjectType | commonModificationTime | commonFileID;
inline constexpr std::uint32_t requestedFile = fileLinkCount | fileTotalSize | fileAllocatedSize;

// Appends the `count` records of `buffer` to `entries` (names point into `buffer`). An entry gets
// a status only when the kernel returned every attribute that makes one and no error; the caller
// asks for the rest one by one. Returns false, keeping the entries decoded before it, when a
// record runs past the buffer, is shorter than its header, its name is not NUL-terminated inside
// it, or it claims attributes that were never asked for (their sizes would be unknown).
bool decode(std::span<const std::byte> buffer, int count, std::vector<ScanDirectoryAccess::Entry>& entries);

}  // namespace corvel::BulkAttributeRecords
