#include "diskops/LinuxDiskCommands.h"

#include "common/Text.h"
#include "diskops/DiskOperationError.h"

#include <algorithm>
#include <array>

namespace corvel::LinuxDiskCommands {
namespace {

std::size_t depth(const std::string& mountPoint) {
    return static_cast<std::size_t>(std::count(mountPoint.begin(), mountPoint.end(), '/'));
}

void collect(const BlockDevice& device, std::vector<std::pair<std::size_t, std::string>>& mounted,
             std::vector<std::string>& unmounted) {
    for (const auto& child : device.children) {
        const auto mounts = fileSystemMounts(child);
        if (!mounts.empty()) {
            std::size_t deepest = 0;
            for (const auto& mountPoint : mounts) deepest = std::max(deepest, depth(mountPoint));
            mounted.emplace_back(deepest, child.kernelName);
        } else if (child.mountPoints.empty() && child.fileSystemType && isMountable(*child.fileSystemType)) {
            unmounted.push_back(child.kernelName);
        }
        collect(child, mounted, unmounted);
    }
}

std::string deviceOf(const DiskObject& target) {
    // Mounts without a device (a share, a memory file system) are named by their path.
    if (target.identifier.empty() || startsWith(target.identifier, "/"))
        throw DiskOperationError::commandFailed(target.identifier + " is not a block device; udisks acts on block "
                                                                    "devices only.");
    return devicePath(target.identifier);
}

DiskCommand udisks(const char* verb, std::string device) {
    return {&udisksPolicy(), {verb, "-b", std::move(device)}};
}

}  // namespace

bool isMountable(const std::string& fileSystemType) {
    static const std::array<std::string_view, 6> notMountable{"swap",          "crypto_LUKS", "LVM2_member",
                                                              "linux_raid_member", "zfs_member", "bcache"};
    return std::find(notMountable.begin(), notMountable.end(), fileSystemType) == notMountable.end();
}

const CommandPolicy& udisksPolicy() {
    static const CommandPolicy policy{udisksctl, {{"mount", "-b"}, {"unmount", "-b"}, {"power-off", "-b"}}};
    return policy;
}

const CommandPolicy& checkPolicy() {
    static const CommandPolicy policy{fsck, {{"-n"}}};
    return policy;
}

std::vector<std::string> fileSystemMounts(const BlockDevice& device) {
    std::vector<std::string> mounts;
    for (const auto& mountPoint : device.mountPoints)
        if (startsWith(mountPoint, "/")) mounts.push_back(mountPoint);
    return mounts;
}

DiskMembers membersOf(const BlockDevice& disk) {
    std::vector<std::pair<std::size_t, std::string>> mounted;
    DiskMembers members;
    collect(disk, mounted, members.unmounted);
    std::stable_sort(mounted.begin(), mounted.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    for (auto& [level, name] : mounted) members.mounted.push_back(std::move(name));
    return members;
}

std::string devicePath(const std::string& deviceName) {
    return "/dev/" + deviceName;
}

std::vector<DiskCommand> commands(DiskOperation operation, const DiskObject& target, const DiskMembers& members) {
    const bool wholeDisk = target.kind == DiskObjectKind::physicalDisk;
    std::vector<DiskCommand> result;
    switch (operation) {
        case DiskOperation::mount:
            if (wholeDisk && !members.unmounted.empty()) {
                for (const auto& member : members.unmounted) result.push_back(udisks("mount", devicePath(member)));
            } else {
                result.push_back(udisks("mount", deviceOf(target)));
            }
            return result;
        case DiskOperation::unmount:
            if (wholeDisk && !members.mounted.empty()) {
                for (const auto& member : members.mounted) result.push_back(udisks("unmount", devicePath(member)));
            } else {
                result.push_back(udisks("unmount", deviceOf(target)));
            }
            return result;
        case DiskOperation::eject: {
            // udisks powers a drive off only once nothing on it is mounted.
            for (const auto& member : members.mounted) result.push_back(udisks("unmount", devicePath(member)));
            const auto& disk = target.physicalDiskID ? *target.physicalDiskID : target.identifier;
            if (startsWith(disk, "/"))
                throw DiskOperationError::commandFailed(disk + " is not a block device; udisks acts on block "
                                                               "devices only.");
            result.push_back(udisks("power-off", devicePath(disk)));
            return result;
        }
        case DiskOperation::verifyVolume:
            result.push_back({&checkPolicy(), {"-n", deviceOf(target)}});
            return result;
        default:
            throw DiskOperationError::notExecutable(operation);
    }
}

}  // namespace corvel::LinuxDiskCommands
