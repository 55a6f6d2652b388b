// Builds the same StorageSnapshot as StorageDiscovery, from Linux sources: lsblk for disks and
// partitions, smartctl for their health, the mount table and statvfs for the volumes.
//
// Never throws; what cannot be read becomes a warning (disks, mount table, capacities) or an
// unknown value (SMART, which needs root and a cooperative USB bridge).
//
//   LinuxStorageDiscovery discovery(runner, mountTable);
//   StorageSnapshot snapshot = discovery.snapshot(now);
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "storage/BlockDevice.h"
#include "storage/LinuxBlockDevices.h"
#include "storage/MountInfoEntry.h"
#include "storage/MountTableReading.h"
#include "storage/StatvfsFigures.h"
#include "storage/StorageSnapshot.h"
#include "storage/StorageVolume.h"

namespace corvel {

class LinuxStorageDiscovery {
public:
    LinuxStorageDiscovery(CommandRunning& runner, MountTableReading& mountTable)
        : runner_(runner), mountTable_(mountTable) {}

    StorageSnapshot snapshot(TimePoint now) const;

    // The mounts worth showing: the root, block-device file systems and network shares, each
    // file system once (bind mounts and repeated mounts of one device collapse onto the mount of
    // its top directory). Pseudo file systems, loop-mounted images and snaps are left out.
    static std::vector<MountInfoEntry> selectMounts(const std::vector<MountInfoEntry>& entries);

    static bool isNetworkFileSystem(const std::string& fileSystemType);

    // Whether names differ by case on this file system; absent when it depends on how it was made.
    static std::optional<bool> supportsCaseSensitiveNames(const std::string& fileSystemType);

    // One volume from its mount, its capacity and (when it sits on a block device) its stack.
    static StorageVolume makeVolume(const MountInfoEntry& mount, const StatvfsFigures& figures,
                                    const std::optional<LinuxBlockDevices::DeviceStack>& stack,
                                    const std::vector<PhysicalDisk>& disks);

private:
    CommandRunning& runner_;
    MountTableReading& mountTable_;
};

}  // namespace corvel
