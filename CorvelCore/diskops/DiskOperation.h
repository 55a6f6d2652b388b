// The closed set of disk operations. Only five can ever run; repair, adding an APFS volume and
// formatting exist as disabled entries or as written plans. Title, button symbol and whether the
// operation can execute live in the one table below.
//
//   title(DiskOperation::firstAid) == "First Aid (Repair)"
//   isExecutableInThisBuild(DiskOperation::prepareFormat) == false
//   enumFromRaw<DiskOperation>("verifyVolume") == DiskOperation::verifyVolume
#pragma once

#include "common/EnumTable.h"

#include <string_view>

namespace corvel {

enum class DiskOperation {
    mount,
    unmount,
    eject,
    verifyVolume,
    firstAid,
    createDirectory,
    createAPFSVolume,
    prepareFormat,
};

// The generic entry (raw value = id, label = title) with the symbol of its button and whether it
// can execute at all.
struct DiskOperationEntry : EnumEntry<DiskOperation> {
    std::string_view symbol;
    bool isExecutableInThisBuild = false;
};

template <>
struct EnumTable<DiskOperation> {
    using E = DiskOperation;
    static constexpr std::array<DiskOperationEntry, 8> entries{{
        {{E::mount, "mount", "Mount"}, "arrow.down.to.line.compact", true},
        {{E::unmount, "unmount", "Unmount"}, "eject.circle", true},
        {{E::eject, "eject", "Eject"}, "eject.fill", true},
        {{E::verifyVolume, "verifyVolume", "Verify"}, "checkmark.shield", true},
        {{E::firstAid, "firstAid", "First Aid (Repair)"}, "stethoscope", false},
        {{E::createDirectory, "createDirectory", "New Folder"}, "folder.badge.plus", true},
        {{E::createAPFSVolume, "createAPFSVolume", "Add APFS Volume"}, "plus.square.on.square", false},
        {{E::prepareFormat, "prepareFormat", "Prepare Formatting"}, "doc.badge.gearshape", false},
    }};
};
CORVEL_ENUM_JSON(DiskOperation)

std::string_view title(DiskOperation operation);
std::string_view symbol(DiskOperation operation);
bool isExecutableInThisBuild(DiskOperation operation);

}  // namespace corvel
