// Which Linux file systems can share blocks between files (reflinks, clones, deduplication).
// Only on those does a file's exclusive size need an extent query; on the others (ext4, tmpfs,
// vfat, …) every allocated block belongs to the file alone.
#pragma once

#include <cstdint>

namespace corvel::BlockSharing {

// `fileSystemMagic` is statfs()'s f_type. File systems this list does not know are taken as
// unable to share: they are also the ones whose extents cannot be asked for reliably.
bool canShareBlocks(std::uint64_t fileSystemMagic);

}  // namespace corvel::BlockSharing
