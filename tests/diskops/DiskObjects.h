// Disk objects for the disk-operation tests: an external USB volume, its whole disk, the startup
// volume and friends, each a small variation of the same plain record.
#pragma once

#include "diskops/DiskObject.h"
#include "diskops/PreflightCheck.h"

#include <ostream>

namespace corvel::diskopstest {

inline DiskObject externalVolume() {
    DiskObject object;
    object.kind = DiskObjectKind::volume;
    object.identifier = "disk4s1";
    object.name = "Backup";
    object.mountPoint = "/Volumes/Backup";
    object.volumeUUID = "6C1A-UUID";
    object.physicalDiskID = "disk4";
    object.sizeBytes = 500'000'000'000;
    object.isEjectable = true;
    object.isWritable = true;
    object.fileSystem = "apfs";
    return object;
}

inline DiskObject externalDisk() {
    DiskObject object;
    object.kind = DiskObjectKind::physicalDisk;
    object.identifier = "disk4";
    object.name = "Elements";
    object.physicalDiskID = "disk4";
    object.sizeBytes = 500'000'000'000;
    object.isEjectable = true;
    object.hostedMountPoints = {"/Volumes/Backup"};
    return object;
}

template <typename Change>
DiskObject with(DiskObject object, Change change) {
    change(object);
    return object;
}

}  // namespace corvel::diskopstest

namespace corvel {
// Readable failure messages for checks.
inline void PrintTo(const PreflightCheck& check, std::ostream* out) {
    *out << "{" << check.title << ", " << rawValue(check.status) << ", " << check.detail << "}";
}
}  // namespace corvel
