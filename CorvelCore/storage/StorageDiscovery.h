// Builds one StorageSnapshot of a Mac from the disk tool and the mounted-volume list.
//
// Never throws: a tool that fails becomes a warning in the snapshot, a volume the tool cannot
// describe is kept without its details. Sorting and the volume-to-disk join live here too, so
// the Linux discovery can share them.
//
//   ProcessCommandRunner runner(20);
//   StorageDiscovery discovery(runner, volumeProvider);
//   StorageSnapshot snapshot = discovery.snapshot(std::chrono::system_clock::now());
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "command/CommandRunning.h"
#include "common/ISO8601.h"
#include "storage/DiskutilVolumeInfo.h"
#include "storage/MountedVolumeRecord.h"
#include "storage/MountedVolumeRecord.h"
#include "storage/PhysicalDisk.h"
#include "storage/StorageSnapshot.h"
#include "storage/StorageVolume.h"

namespace corvel {

class StorageDiscovery {
public:
    StorageDiscovery(CommandRunning& runner, MountedVolumeProviding& volumeProvider)
        : runner_(runner), volumeProvider_(volumeProvider) {}

    StorageSnapshot snapshot(TimePoint now) const;

    // Joins what the file system and the disk tool say about one mounted volume.
    static StorageVolume makeVolume(const MountedVolumeRecord& record, const std::optional<DiskutilVolumeInfo>& info,
                                    const std::set<std::string>& physicalDiskIDs);

    // Internal disks first, then by id in plain string order; stable.
    static void sortDisks(std::vector<PhysicalDisk>& disks);
    // The boot volume first, then by name in plain string order; stable.
    static void sortVolumes(std::vector<StorageVolume>& volumes);

private:
    CommandRunning& runner_;
    MountedVolumeProviding& volumeProvider_;
};

// The text a discovery warning carries for a failure: the documented description for command
// and parser errors, the exception's message otherwise.
std::string describeError(const std::exception& error);

}  // namespace corvel
