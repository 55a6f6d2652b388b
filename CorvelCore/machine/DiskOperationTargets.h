// What a person names as the target of a disk operation, found on the machine: a disk-tool
// identifier ("disk4s1", "disk4", "disk3" for a container), a Linux device ("sdb1", "/dev/sdb"),
// or a mount path. Along with the object come what the preflight and the Linux executor need: the
// mounted volumes on its physical disk and (Linux) the file systems of that disk.
//
//   auto sources = DiskOperationTargets::gather(machine, snapshot);
//   if (auto target = DiskOperationTargets::resolve(sources, "disk4s1")) ...
#pragma once

#include "common/Platform.h"
#include "diskops/DiskObject.h"
#include "diskops/LinuxDiskCommands.h"
#include "machine/Machine.h"
#include "storage/BlockDevice.h"
#include "storage/MountInfoEntry.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DiskOperationTarget {
    DiskObject object;
    std::vector<StorageVolume> volumesOnDisk;  // mounted volumes on the object's physical disk
    LinuxDiskCommands::DiskMembers members;    // Linux: the file systems of that disk
};

namespace DiskOperationTargets {

// Everything targets are looked up in.
struct Sources {
    StorageSnapshot snapshot;
    Platform platform = Platform::macos;
    std::vector<BlockDevice> devices;    // Linux: lsblk's trees (unmounted file systems, members)
    std::vector<MountInfoEntry> mounts;  // Linux: the mount table (mounts discovery leaves out)
};

// The snapshot plus, for a Linux machine, lsblk's listing and the mount table, live or recorded.
// Never throws: what cannot be read is simply not available for lookup.
Sources gather(Machine& machine, StorageSnapshot snapshot);

// Absent when `text` names nothing known. In order: a mount path (a volume's, else any mount of
// the mount table as a mount point), a volume's device, a whole disk, an APFS container, an
// unmounted file system (Linux), a partition.
std::optional<DiskOperationTarget> resolve(const Sources& sources, const std::string& text);

}  // namespace DiskOperationTargets
}  // namespace corvel
