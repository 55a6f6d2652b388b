#include "space/BlockSharing.h"

#include <algorithm>
#include <array>

namespace corvel::BlockSharing {

bool canShareBlocks(std::uint64_t fileSystemMagic) {
    // statfs f_type values; overlayfs passes reflinked copies and extent queries through to
    // the file system below it.
    static constexpr std::array<std::uint64_t, 5> sharing{
        0x58465342,  // XFS
        0x9123683E,  // btrfs
        0xCA451A4E,  // bcachefs
        0x7461636F,  // OCFS2
        0x794C7630,  // overlayfs
    };
    return std::find(sharing.begin(), sharing.end(), fileSystemMagic) != sharing.end();
}

}  // namespace corvel::BlockSharing
