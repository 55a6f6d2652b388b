// Decodes what Linux's getdents64 writes into its buffer: records of an 8-byte inode, an 8-byte
// offset, a 2-byte record length, a 1-byte type and a NUL-terminated name, each record aligned
// to 8 bytes. Pure, so it is tested on synthetic buffers; the system call lives in the Linux
// platform layer.
//
//   std::vector<ScanDirectoryAccess::Entry> entries;
//   if (!DirentBuffer::decode(std::span(buffer.data(), bytesRead), entries)) { /* malformed */ }
#pragma once

#include "space/ScanDirectoryAccess.h"

#include <cstddef>
#include <span>
#include <vector>

namespace corvel::DirentBuffer {

inline constexpr std::size_t nameOffset = 19;  // offsetof(struct linux_dirent64, d_name)

// Appends the entries of `bytes` (leaving out "." and ".."); names point into `bytes`. False when
// a record is shorter than its header, runs past the end, or has no NUL within its length.
bool decode(std::span<std::byte> bytes, std::vector<ScanDirectoryAccess::Entry>& entries);

}  // namespace corvel::DirentBuffer
