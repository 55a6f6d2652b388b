#include "storage/LinuxStorageDiscovery.h"

#include <algorithm>
#include <array>
#include <map>

#include "common/Text.h"
#include "storage/LsblkClient.h"
#include "storage/LsblkParser.h"
#include "storage/SmartctlClient.h"
#include "storage/StorageDiscovery.h"

namespace corvel {

namespace {

// fuseblk hides the real file system (ntfs-3g, exfat-fuse); lsblk knows it.
std::string effectiveType(const MountInfoEntry& mount, const std::optional<LinuxBlockDevices::DeviceStack>& stack) {
    if (mount.fileSystemType == "fuseblk" && stack && stack->device().fileSystemType) {
        return toLower(*stack->device().fileSystemType);
    }
    return toLower(mount.fileSystemType);
}

std::string volumeName(const MountInfoEntry& mount, const std::optional<LinuxBlockDevices::DeviceStack>& stack) {
    if (stack && stack->device().label) return *stack->device().label;
    if (mount.mountPoint == "/") return "Root";
    auto slash = mount.mountPoint.find_last_of('/');
    std::string last = slash == std::string::npos ? mount.mountPoint : mount.mountPoint.substr(slash + 1);
    return last.empty() ? mount.mountPoint : last;
}

}  // namespace

bool LinuxStorageDiscovery::isNetworkFileSystem(const std::string& fileSystemType) {
    static const std::array<std::string_view, 13> types{
        "nfs",  "nfs4",      "cifs",       "smb3",           "smbfs",       "ncpfs", "afs",
        "ceph", "glusterfs", "fuse.sshfs", "fuse.glusterfs", "fuse.rclone", "davfs",
    };
    return std::find(types.begin(), types.end(), fileSystemType) != types.end();
}

std::optional<bool> LinuxStorageDiscovery::supportsCaseSensitiveNames(const std::string& fileSystemType) {
    static const std::array<std::string_view, 9> sensitive{"ext2", "ext3", "ext4", "xfs",     "btrfs",
                                                           "f2fs", "zfs",  "jfs",  "bcachefs"};
    static const std::array<std::string_view, 3> insensitive{"vfat", "msdos", "exfat"};
    if (std::find(sensitive.begin(), sensitive.end(), fileSystemType) != sensitive.end()) return true;
    if (std::find(insensitive.begin(), insensitive.end(), fileSystemType) != insensitive.end()) return false;
    return std::nullopt;
}

std::vector<MountInfoEntry> LinuxStorageDiscovery::selectMounts(const std::vector<MountInfoEntry>& entries) {
    auto isWanted = [](const MountInfoEntry& mount) {
        if (mount.mountPoint == "/") return true;
        if (isNetworkFileSystem(mount.fileSystemType)) return true;
        if (!startsWith(mount.source, "/dev/")) return false;
        // Snaps and disk images are loop devices; they are files on another volume, not storage.
        return !startsWith(mount.source, "/dev/loop") && mount.fileSystemType != "squashfs";
    };

    // A file system is identified by its device numbers; the preferred mount of each is the root
    // itself, else one showing the whole file system, else the first.
    auto rank = [](const MountInfoEntry& mount) { return mount.mountPoint == "/" ? 0 : mount.root == "/" ? 1 : 2; };
    std::map<std::string, std::size_t> chosen;  // device numbers → index into `wanted`
    std::vector<MountInfoEntry> wanted;
    for (const auto& mount : entries) {
        if (!isWanted(mount)) continue;
        auto [it, inserted] = chosen.emplace(mount.majorMinor, wanted.size());
        if (inserted) {
            wanted.push_back(mount);
        } else if (rank(mount) < rank(wanted[it->second])) {
            wanted[it->second] = mount;
        }
    }
    return wanted;
}

StorageVolume LinuxStorageDiscovery::makeVolume(const MountInfoEntry& mount, const StatvfsFigures& figures,
                                                const std::optional<LinuxBlockDevices::DeviceStack>& stack,
                                                const std::vector<PhysicalDisk>& disks) {
    StorageVolume volume;
    std::string type = effectiveType(mount, stack);
    std::optional<std::string> uuid = stack ? stack->device().uuid : std::nullopt;

    volume.id = uuid.value_or(mount.mountPoint);
    volume.name = volumeName(mount, stack);
    volume.mountPoint = mount.mountPoint;
    if (stack) volume.bsdName = stack->device().kernelName;
    if (!type.empty()) volume.fileSystemType = type;
    volume.totalBytes = figures.totalBytes;
    volume.availableBytes = figures.availableBytes;
    if (figures.freeBytes > figures.availableBytes) volume.reservedBytes = figures.freeBytes - figures.availableBytes;
    volume.isReadOnly = mount.isReadOnly();
    volume.isNetwork = isNetworkFileSystem(mount.fileSystemType);
    volume.isBootVolume = mount.mountPoint == "/";
    if (stack) volume.isEncrypted = stack->hasCryptLayer();
    volume.supportsCaseSensitiveNames = supportsCaseSensitiveNames(type);

    if (stack) {
        const std::string& top = stack->top().kernelName;
        auto disk = std::find_if(disks.begin(), disks.end(), [&](const PhysicalDisk& d) { return d.id == top; });
        if (disk != disks.end()) {
            volume.physicalDiskID = disk->id;
            volume.isInternal = disk->isInternal;
            volume.isEjectable = disk->isEjectable;
            volume.busProtocol = disk->busProtocol;
        }
    }
    return volume;
}

StorageSnapshot LinuxStorageDiscovery::snapshot(TimePoint now) const {
    std::vector<std::string> warnings;

    std::vector<BlockDevice> devices;
    try {
        devices = LsblkParser::parse(LsblkClient{runner_}.listAll());
    } catch (const std::exception& error) {
        warnings.push_back("Could not list physical disks: " + describeError(error));
    }

    std::vector<PhysicalDisk> disks;
    SmartctlClient smartctl{runner_};
    for (const auto& device : devices) {
        if (!LinuxBlockDevices::isPhysicalDisk(device)) continue;
        PhysicalDisk disk = LinuxBlockDevices::makePhysicalDisk(device);
        SmartctlReport report = smartctl.report(device.path);
        disk.smartStatus = report.smartStatus;
        disk.nvme = report.nvme;
        disks.push_back(std::move(disk));
    }

    std::vector<MountInfoEntry> mounts;
    try {
        mounts = selectMounts(MountInfoEntry::parse(mountTable_.mountInfo()));
    } catch (const std::exception& error) {
        warnings.push_back("Could not list mounted volumes: " + describeError(error));
    }

    std::vector<StorageVolume> volumes;
    std::set<std::string> ids;
    for (const auto& mount : mounts) {
        StatvfsFigures figures;
        try {
            figures = mountTable_.statvfs(mount.mountPoint);
        } catch (const std::exception& error) {
            warnings.push_back("Could not read the capacity of " + mount.mountPoint + ": " + describeError(error));
        }
        StorageVolume volume = makeVolume(mount, figures, LinuxBlockDevices::locate(devices, mount), disks);
        // A cloned disk repeats its file-system UUID; the mount point keeps ids unique.
        if (!ids.insert(volume.id).second) {
            volume.id = volume.mountPoint;
            ids.insert(volume.id);
        }
        volumes.push_back(std::move(volume));
    }

    StorageDiscovery::sortDisks(disks);
    StorageDiscovery::sortVolumes(volumes);

    StorageSnapshot snapshot;
    snapshot.capturedAt = now;
    snapshot.disks = std::move(disks);
    snapshot.volumes = std::move(volumes);
    snapshot.warnings = std::move(warnings);
    return snapshot;
}

}  // namespace corvel
