// Bit values of macOS <sys/attr.h> and object types of <sys/vnode.h> (a fixed ABI), spelled out
// once so that the reply decoders of getattrlist and getattrlistbulk build and are tested on any
// platform. The decoders and the macOS calls both ask with these.
//
//   using namespace corvel::AttributeBits;
//   attrlist request{.commonattr = commonDeviceID | commonFileID, .fileattr = fileTotalSize};
#pragma once

#include <cstdint>

namespace corvel::AttributeBits {

inline constexpr std::uint32_t commonName = 0x00000001;                // ATTR_CMN_NAME
inline constexpr std::uint32_t commonDeviceID = 0x00000002;            // ATTR_CMN_DEVID
inline constexpr std::uint32_t commonObjectType = 0x00000008;          // ATTR_CMN_OBJTYPE
inline constexpr std::uint32_t commonModificationTime = 0x00000400;    // ATTR_CMN_MODTIME
inline constexpr std::uint32_t commonFileID = 0x02000000;              // ATTR_CMN_FILEID
inline constexpr std::uint32_t commonError = 0x20000000;               // ATTR_CMN_ERROR
inline constexpr std::uint32_t commonReturnedAttributes = 0x80000000;  // ATTR_CMN_RETURNED_ATTRS
inline constexpr std::uint32_t fileLinkCount = 0x00000001;             // ATTR_FILE_LINKCOUNT
inline constexpr std::uint32_t fileTotalSize = 0x00000002;             // ATTR_FILE_TOTALSIZE
inline constexpr std::uint32_t fileAllocatedSize = 0x00000004;         // ATTR_FILE_ALLOCSIZE
inline constexpr std::uint32_t extendedPrivateSize = 0x00000008;       // ATTR_CMNEXT_PRIVATESIZE

inline constexpr std::uint32_t typeRegular = 1;    // VREG
inline constexpr std::uint32_t typeDirectory = 2;  // VDIR
inline constexpr std::uint32_t typeSymlink = 5;    // VLNK

}  // namespace corvel::AttributeBits
