// The Linux side of the disk operations: udisks mounts, unmounts and powers off block devices the
// way the desktop does (as the signed-in user, with the system's own authorisation), and verify is
// a read-only fsck of an unmounted file system. Nothing here ever carries a force option.
//
//   auto members = LinuxDiskCommands::membersOf(lsblkDisk);
//   for (const auto& command : LinuxDiskCommands::commands(DiskOperation::unmount, disk, members))
//       command.policy->run(command.arguments, runner);
#pragma once

#include "command/CommandPolicy.h"
#include "diskops/DiskCommand.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "storage/BlockDevice.h"

#include <string>
#include <vector>

namespace corvel::LinuxDiskCommands {

inline constexpr const char* udisksctl = "/usr/bin/udisksctl";
inline constexpr const char* fsck = "/usr/sbin/fsck";

// ["mount", "-b"], ["unmount", "-b"], ["power-off", "-b"]
const CommandPolicy& udisksPolicy();
// ["-n"]: check only, answer "no" to every repair
const CommandPolicy& checkPolicy();

// The file systems of a whole disk that disk-wide operations act on one by one: those mounted now
// (deepest mount point first, so nested mounts come off before their parents) and those that
// carry a mountable file system but are not mounted.
struct DiskMembers {
    std::vector<std::string> mounted;    // device names ("sdb1", "dm-3")
    std::vector<std::string> unmounted;
    bool operator==(const DiskMembers&) const = default;
};

// Whether a file-system type lsblk reports can be mounted: not swap, an encrypted container or a
// member of a RAID or LVM set.
bool isMountable(const std::string& fileSystemType);

// The places a device's file system is mounted: lsblk also lists "[SWAP]" for active swap.
std::vector<std::string> fileSystemMounts(const BlockDevice& device);

// From lsblk's tree of one disk. Swap, encrypted containers and RAID or LVM members are not
// mountable and are left out.
DiskMembers membersOf(const BlockDevice& disk);

// "/dev/" + a device name.
std::string devicePath(const std::string& deviceName);

// The commands of an executable operation, in order: a whole disk is mounted or unmounted member
// by member, and an eject unmounts the disk's mounted members before powering it off. Throws
// DiskOperationError: notExecutable for the plan-only operations and new folder, commandFailed
// for a target that is not a block device (a mount of a network or memory file system).
std::vector<DiskCommand> commands(DiskOperation operation, const DiskObject& target, const DiskMembers& members);

}  // namespace corvel::LinuxDiskCommands
