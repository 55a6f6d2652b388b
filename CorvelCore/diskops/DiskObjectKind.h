// What a disk operation can be aimed at. The raw value is also what people read.
//
//   rawValue(DiskObjectKind::apfsContainer) == "APFS Container"
#pragma once

#include "common/EnumTable.h"

namespace corvel {

enum class DiskObjectKind { physicalDisk, partition, apfsContainer, volume, mountPoint };

template <>
struct EnumTable<DiskObjectKind> {
    static constexpr std::array<EnumEntry<DiskObjectKind>, 5> entries{{
        {DiskObjectKind::physicalDisk, "Physical Disk", "Physical Disk"},
        {DiskObjectKind::partition, "Partition", "Partition"},
        {DiskObjectKind::apfsContainer, "APFS Container", "APFS Container"},
        {DiskObjectKind::volume, "Volume", "Volume"},
        {DiskObjectKind::mountPoint, "Mount Point", "Mount Point"},
    }};
};
CORVEL_ENUM_JSON(DiskObjectKind)

}  // namespace corvel
