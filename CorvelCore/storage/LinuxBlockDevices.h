// Pure decisions over lsblk's device trees: which devices are whole physical disks, how each
// becomes a PhysicalDisk, and which stack of devices (partition, crypt, LVM) carries a mount.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "storage/BlockDevice.h"
#include "storage/MountInfoEntry.h"
#include "storage/PhysicalDisk.h"

namespace corvel::LinuxBlockDevices {

// A top-level "disk" that is real hardware: not a loop, zram, ram or rom device.
bool isPhysicalDisk(const BlockDevice& device);

// The disk's record without its SMART facts (those come from smartctl).
PhysicalDisk makePhysicalDisk(const BlockDevice& device);

// "usb" → "USB", "nvme" → "NVMe"; virtio disks have no transport but say so in their subsystems.
std::optional<std::string> busProtocol(const BlockDevice& device);

// The devices from a top-level device down to the one a mount uses, outermost first.
struct DeviceStack {
    std::vector<const BlockDevice*> chain;

    const BlockDevice& top() const { return *chain.front(); }
    const BlockDevice& device() const { return *chain.back(); }
    bool hasCryptLayer() const;
};

// Finds the device a mount sits on: by its major:minor numbers, else by its source path
// (/dev/mapper/..., /dev/disk/by-uuid/... and friends). Absent for network and virtual mounts.
std::optional<DeviceStack> locate(const std::vector<BlockDevice>& devices, const MountInfoEntry& mount);

}  // namespace corvel::LinuxBlockDevices
