// One block device as `lsblk -J -b -O` describes it, with the devices stacked on it (partitions
// under a disk, a crypt mapping under a partition, logical volumes under that).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Json.h"

namespace corvel {

struct BlockDevice {
    std::string name;                  // as shown ("vg0-root")
    std::string kernelName;            // kernel name ("dm-1"); the name when lsblk gives none
    std::string path;                  // device node ("/dev/mapper/vg0-root")
    std::string type;                  // disk, part, crypt, lvm, loop, rom, raid1, ...
    std::optional<std::string> majorMinor;  // "253:1"
    std::int64_t sizeBytes = 0;
    std::optional<std::string> vendor;
    std::optional<std::string> model;
    std::optional<std::string> serial;
    std::optional<std::string> transport;   // usb, sata, nvme, ...
    std::optional<std::string> subsystems;  // "block:scsi:usb:pci"
    std::optional<bool> isRotational;
    std::optional<bool> isRemovable;
    std::optional<bool> isHotplug;
    std::optional<bool> isReadOnly;
    std::optional<int> physicalSectorSize;
    std::optional<std::string> partitionTableType;  // gpt, dos
    std::optional<std::string> fileSystemType;
    std::optional<std::string> label;
    std::optional<std::string> uuid;
    std::optional<std::string> partitionUUID;
    std::optional<std::string> partitionLabel;
    std::optional<std::string> partitionTypeName;
    std::vector<std::string> mountPoints;
    std::vector<BlockDevice> children;

    bool operator==(const BlockDevice&) const = default;
};

CORVEL_JSON_RECORD(BlockDevice, name, kernelName, path, type, majorMinor, sizeBytes, vendor, model, serial, transport, subsystems, isRotational, isRemovable, isHotplug, isReadOnly, physicalSectorSize, partitionTableType, fileSystemType, label, uuid, partitionUUID, partitionLabel, partitionTypeName, mountPoints, children)

}  // namespace corvel
