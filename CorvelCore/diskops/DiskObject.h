// The thing a disk operation is aimed at: a whole disk, a partition, an APFS container, a volume
// or a mount point, with the facts the policy and the preflight decide by.
//
//   DiskObject volume = DiskObject::volume(snapshot.volumes[1]);            // "Volume|disk4s1"
//   DiskObject disk = DiskObject::disk(snapshot.disks[1], false, {"/Volumes/Backup"});
//   if (volume.isMounted()) ...
#pragma once

#include "common/Json.h"
#include "diskops/DiskObjectKind.h"
#include "storage/PhysicalDisk.h"
#include "storage/StorageVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DiskObject {
    DiskObjectKind kind = DiskObjectKind::volume;
    std::string identifier;  // a disk-tool identifier ("disk4s1", "sdb1"), or a path for a volume without one
    std::string name;
    std::optional<std::string> mountPoint;
    std::optional<std::string> volumeUUID;
    std::optional<std::string> physicalDiskID;
    std::int64_t sizeBytes = 0;
    bool isInternal = false;
    bool isBootVolume = false;  // is, or for a disk hosts, the startup volume
    bool isEjectable = false;
    bool isWritable = false;
    bool isNetwork = false;
    std::optional<std::string> fileSystem;
    std::vector<std::string> hostedMountPoints;  // for a physical disk: its volumes' mount points

    // Kind raw value + "|" + identifier ("Volume|disk4s1").
    std::string id() const;
    bool isMounted() const { return mountPoint.has_value(); }

    // A mounted volume of the snapshot; identified by its BSD name, else its mount point.
    static DiskObject volume(const StorageVolume& volume);
    // A whole disk; its name is the media name without the tool's " Media".
    static DiskObject disk(const PhysicalDisk& disk, bool hostsBootVolume, std::vector<std::string> mountPoints);

    bool operator==(const DiskObject&) const = default;
};

CORVEL_JSON_RECORD(DiskObject, kind, identifier, name, mountPoint, volumeUUID, physicalDiskID, sizeBytes, isInternal,
                   isBootVolume, isEjectable, isWritable, isNetwork, fileSystem, hostedMountPoints)

}  // namespace corvel
