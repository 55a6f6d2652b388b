#include "diskops/DiskObject.h"

#include "common/Text.h"

namespace corvel {

std::string DiskObject::id() const {
    return std::string(rawValue(kind)) + "|" + identifier;
}

DiskObject DiskObject::volume(const StorageVolume& volume) {
    DiskObject object;
    object.kind = DiskObjectKind::volume;
    object.identifier = volume.bsdName.value_or(volume.mountPoint);
    object.name = volume.name;
    object.mountPoint = volume.mountPoint;
    object.volumeUUID = volume.id;
    object.physicalDiskID = volume.physicalDiskID;
    object.sizeBytes = volume.totalBytes;
    object.isInternal = volume.isInternal;
    object.isBootVolume = volume.isBootVolume;
    object.isEjectable = volume.isEjectable;
    object.isNetwork = volume.isNetwork;
    object.isWritable = !volume.isReadOnly;
    object.fileSystem = volume.fileSystemType;
    return object;
}

DiskObject DiskObject::disk(const PhysicalDisk& disk, bool hostsBootVolume, std::vector<std::string> mountPoints) {
    DiskObject object;
    object.kind = DiskObjectKind::physicalDisk;
    object.identifier = disk.id;
    object.name = disk.mediaName.empty() ? disk.id : replaceAll(disk.mediaName, " Media", "");
    object.physicalDiskID = disk.id;
    object.sizeBytes = disk.sizeBytes;
    object.isInternal = disk.isInternal;
    object.isEjectable = disk.isEjectable;
    object.isBootVolume = hostsBootVolume;
    object.isWritable = false;
    object.isNetwork = false;
    object.hostedMountPoints = std::move(mountPoints);
    return object;
}

}  // namespace corvel
