#include "machine/DiskOperationTargets.h"

#include "common/PathText.h"
#include "common/Text.h"
#include "storage/LinuxBlockDevices.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/LsblkClient.h"
#include "storage/LsblkParser.h"
#include "storage/PlatformStorage.h"
#include "storage/RecordedMountTable.h"

#include <algorithm>

namespace corvel::DiskOperationTargets {
namespace {

const PhysicalDisk* diskWithID(const StorageSnapshot& snapshot, const std::string& id) {
    const auto found = std::find_if(snapshot.disks.begin(), snapshot.disks.end(),
                                    [&](const PhysicalDisk& disk) { return disk.id == id; });
    return found == snapshot.disks.end() ? nullptr : &*found;
}

// The chain of devices from a top-level device down to the one named `name`.
bool findChain(const std::vector<BlockDevice>& devices, const std::string& name,
               std::vector<const BlockDevice*>& chain) {
    for (const auto& device : devices) {
        chain.push_back(&device);
        if (device.kernelName == name || device.name == name || device.path == "/dev/" + name) return true;
        if (findChain(device.children, name, chain)) return true;
        chain.pop_back();
    }
    return false;
}

void copyDiskFacts(const Sources& sources, const std::string& topDevice, DiskObject& object) {
    if (const auto* disk = diskWithID(sources.snapshot, topDevice)) {
        object.physicalDiskID = disk->id;
        object.isInternal = disk->isInternal;
        object.isEjectable = disk->isEjectable;
    }
}

DiskOperationTarget complete(const Sources& sources, DiskObject object) {
    DiskOperationTarget target;
    if (object.physicalDiskID) {
        for (const auto& volume : sources.snapshot.volumes)
            if (volume.physicalDiskID == object.physicalDiskID) target.volumesOnDisk.push_back(volume);
        if (sources.platform == Platform::linux) {
            for (const auto& device : sources.devices)
                if (device.kernelName == *object.physicalDiskID) target.members = LinuxDiskCommands::membersOf(device);
        }
    }
    target.object = std::move(object);
    return target;
}

DiskObject mountPointObject(const Sources& sources, const MountInfoEntry& mount) {
    DiskObject object;
    object.kind = DiskObjectKind::mountPoint;
    object.name = lastComponent(mount.mountPoint);
    object.mountPoint = mount.mountPoint;
    object.isWritable = !mount.isReadOnly();
    object.isNetwork = LinuxStorageDiscovery::isNetworkFileSystem(mount.fileSystemType);
    object.isBootVolume = mount.mountPoint == "/";
    object.fileSystem = mount.fileSystemType;
    if (const auto stack = LinuxBlockDevices::locate(sources.devices, mount)) {
        object.identifier = stack->device().kernelName;
        object.sizeBytes = stack->device().sizeBytes;
        copyDiskFacts(sources, stack->top().kernelName, object);
    } else if (startsWith(mount.source, "/dev/")) {
        object.identifier = mount.source.substr(5);
    } else {
        object.identifier = mount.mountPoint;
    }
    return object;
}

std::optional<DiskOperationTarget> resolvePath(const Sources& sources, const std::string& path) {
    for (const auto& volume : sources.snapshot.volumes)
        if (volume.mountPoint == path) return complete(sources, DiskObject::volume(volume));
    // The last mount at a path is the one on top, the one people see there.
    for (auto mount = sources.mounts.rbegin(); mount != sources.mounts.rend(); ++mount)
        if (mount->mountPoint == path) return complete(sources, mountPointObject(sources, *mount));
    return std::nullopt;
}

DiskObject containerObject(const std::string& id, const std::vector<const StorageVolume*>& volumes) {
    DiskObject object;
    object.kind = DiskObjectKind::apfsContainer;
    object.identifier = id;
    std::vector<std::string> names;
    for (const auto* volume : volumes) {
        names.push_back(volume->name);
        object.sizeBytes = std::max(object.sizeBytes, volume->totalBytes);
        object.isInternal = object.isInternal || volume->isInternal;
        object.isBootVolume = object.isBootVolume || volume->isBootVolume;
        object.isWritable = object.isWritable || !volume->isReadOnly;
        if (!object.physicalDiskID) object.physicalDiskID = volume->physicalDiskID;
    }
    object.isEjectable = volumes.front()->isEjectable;
    object.name = join(names, ", ");
    object.fileSystem = "apfs";
    return object;
}

DiskObject unmountedVolumeObject(const Sources& sources, const std::vector<const BlockDevice*>& chain) {
    const auto& device = *chain.back();
    DiskObject object;
    object.kind = DiskObjectKind::volume;
    object.identifier = device.kernelName;
    object.name = device.label.value_or(device.kernelName);
    object.volumeUUID = device.uuid;
    object.sizeBytes = device.sizeBytes;
    object.isWritable = !device.isReadOnly.value_or(false);
    object.fileSystem = device.fileSystemType;
    copyDiskFacts(sources, chain.front()->kernelName, object);
    return object;
}

DiskObject partitionObject(const PhysicalDisk& disk, const Partition& partition) {
    DiskObject object;
    object.kind = DiskObjectKind::partition;
    object.identifier = partition.id;
    object.name = partition.volumeName.value_or(partition.id);
    object.physicalDiskID = disk.id;
    object.sizeBytes = partition.sizeBytes;
    object.isInternal = disk.isInternal;
    object.isEjectable = disk.isEjectable;
    return object;
}

}  // namespace

Sources gather(Machine& machine, StorageSnapshot snapshot) {
    Sources sources;
    sources.snapshot = std::move(snapshot);
    sources.platform = machine.platform();
    if (sources.platform != Platform::linux) return sources;
    try {
        sources.devices = LsblkParser::parse(LsblkClient{machine.runner(ToolTimeout::discovery)}.listAll());
    } catch (const std::exception&) {
        // Without lsblk only the snapshot's disks and volumes can be named.
    }
    try {
        if (const auto* recording = machine.recording()) {
            sources.mounts = MountInfoEntry::parse(RecordedMountTable(recording->document).mountInfo());
        } else if (auto table = PlatformStorage::mountTable()) {
            sources.mounts = MountInfoEntry::parse(table->mountInfo());
        }
    } catch (const std::exception&) {
        // Mount points outside the snapshot are then unknown.
    }
    return sources;
}

std::optional<DiskOperationTarget> resolve(const Sources& sources, const std::string& text) {
    if (text.empty()) return std::nullopt;
    const bool devicePath = startsWith(text, "/dev/");
    if (startsWith(text, "/") && !devicePath) return resolvePath(sources, normalPath(text));
    const std::string name = devicePath ? text.substr(5) : text;
    const auto& snapshot = sources.snapshot;

    for (const auto& volume : snapshot.volumes)
        if (volume.bsdName == name) return complete(sources, DiskObject::volume(volume));

    if (const auto* disk = diskWithID(snapshot, name)) {
        bool hostsBootVolume = false;
        std::vector<std::string> mountPoints;
        for (const auto& volume : snapshot.volumesOn(*disk)) {
            hostsBootVolume = hostsBootVolume || volume.isBootVolume;
            mountPoints.push_back(volume.mountPoint);
        }
        return complete(sources, DiskObject::disk(*disk, hostsBootVolume, std::move(mountPoints)));
    }

    std::vector<const StorageVolume*> contained;
    for (const auto& volume : snapshot.volumes)
        if (volume.containerID == name) contained.push_back(&volume);
    if (!contained.empty()) return complete(sources, containerObject(name, contained));

    std::vector<const BlockDevice*> chain;
    if (findChain(sources.devices, name, chain) && chain.size() > 1) {
        const auto& device = *chain.back();
        // Mounted, but not a volume of the snapshot: a loop-mounted image, a second mount.
        const auto mounts = LinuxDiskCommands::fileSystemMounts(device);
        if (!mounts.empty()) return resolvePath(sources, mounts.front());
        if (device.mountPoints.empty() && device.fileSystemType &&
            LinuxDiskCommands::isMountable(*device.fileSystemType))
            return complete(sources, unmountedVolumeObject(sources, chain));
    }

    for (const auto& disk : snapshot.disks)
        for (const auto& partition : disk.partitions)
            if (partition.id == name) return complete(sources, partitionObject(disk, partition));
    return std::nullopt;
}

}  // namespace corvel::DiskOperationTargets
