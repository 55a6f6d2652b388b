#include "storage/StorageDiscovery.h"

#include <algorithm>

#include "command/CommandError.h"
#include "command/DiskutilClient.h"
#include "common/Text.h"
#include "storage/DiskutilParser.h"

namespace corvel {

std::string describeError(const std::exception& error) {
    if (const auto* command = dynamic_cast<const CommandError*>(&error)) return command->description();
    if (const auto* parse = dynamic_cast<const DiskutilParseError*>(&error)) return parse->description();
    return error.what();
}

StorageSnapshot StorageDiscovery::snapshot(TimePoint now) const {
    const CommandPolicy& policy = DiskutilClient::policy();
    std::vector<std::string> warnings;

    std::vector<ListedDisk> listed;
    try {
        listed = DiskutilParser::parseList(policy.run({"list", "-plist", "physical"}, runner_));
    } catch (const std::exception& error) {
        warnings.push_back("Could not list physical disks: " + describeError(error));
    }

    std::vector<PhysicalDisk> disks;
    for (const auto& entry : listed) {
        try {
            // policy.run refuses an argument list it does not permit with notAllowed.
            std::string bytes = policy.run({"info", "-plist", entry.id}, runner_);
            disks.push_back(DiskutilParser::parsePhysicalDisk(bytes, entry));
        } catch (const std::exception& error) {
            warnings.push_back("Could not read details for " + entry.id + ": " + describeError(error));
        }
    }

    std::set<std::string> physicalDiskIDs;
    for (const auto& disk : disks) physicalDiskIDs.insert(disk.id);

    std::vector<MountedVolumeRecord> records;
    try {
        records = volumeProvider_.mountedVolumes();
    } catch (const std::exception& error) {
        warnings.push_back("Could not list mounted volumes: " + describeError(error));
    }

    std::vector<StorageVolume> volumes;
    volumes.reserve(records.size());
    for (const auto& record : records) {
        std::optional<DiskutilVolumeInfo> info;
        // Network shares are never handed to the disk tool: it would only stall on them.
        if (record.isLocal) {
            std::vector<std::string> arguments{"info", "-plist", record.path};
            if (policy.permits(arguments)) {
                try {
                    info = DiskutilParser::parseVolumeInfo(policy.run(arguments, runner_));
                } catch (const std::exception&) {
                    // A volume without details is still worth showing; its disk stays unknown.
                    info.reset();
                }
            }
        }
        volumes.push_back(makeVolume(record, info, physicalDiskIDs));
    }

    sortDisks(disks);
    sortVolumes(volumes);

    StorageSnapshot snapshot;
    snapshot.capturedAt = now;
    snapshot.disks = std::move(disks);
    snapshot.volumes = std::move(volumes);
    snapshot.warnings = std::move(warnings);
    return snapshot;
}

StorageVolume StorageDiscovery::makeVolume(const MountedVolumeRecord& record,
                                           const std::optional<DiskutilVolumeInfo>& info,
                                           const std::set<std::string>& physicalDiskIDs) {
    StorageVolume volume;

    // An APFS volume lives on a synthesized container disk; its physical stores name the real
    // disk underneath, so they are asked first.
    if (info) {
        std::vector<std::string> candidates;
        for (const auto& store : info->physicalStores) candidates.push_back(DiskutilParser::wholeDiskIdentifier(store));
        if (info->parentWholeDisk) candidates.push_back(DiskutilParser::wholeDiskIdentifier(*info->parentWholeDisk));
        if (info->deviceIdentifier) candidates.push_back(DiskutilParser::wholeDiskIdentifier(*info->deviceIdentifier));
        for (const auto& candidate : candidates) {
            if (physicalDiskIDs.count(candidate)) {
                volume.physicalDiskID = candidate;
                break;
            }
        }
    }

    if (record.uuid) {
        volume.id = *record.uuid;
    } else if (info && info->volumeUUID) {
        volume.id = *info->volumeUUID;
    } else {
        volume.id = record.path;
    }

    volume.name = info && info->volumeName ? *info->volumeName : record.name;
    volume.mountPoint = record.path;
    volume.bsdName = info ? info->deviceIdentifier : std::nullopt;

    if (info && info->fileSystemType) {
        volume.fileSystemType = info->fileSystemType;
    } else if (record.typeName) {
        volume.fileSystemType = toLower(*record.typeName);
    }
    volume.fileSystemName = info && info->fileSystemName ? info->fileSystemName : record.typeName;

    volume.totalBytes = record.totalBytes;
    volume.availableBytes = record.effectiveAvailableBytes();

    // The disk tool knows the device; the file system knows how the volume is presented to the
    // user, which is what ejecting acts on.
    if (info && info->isInternal) {
        volume.isInternal = *info->isInternal;
    } else {
        volume.isInternal = record.isInternal.value_or(false);
    }
    if (record.isEjectable) {
        volume.isEjectable = *record.isEjectable;
    } else {
        volume.isEjectable = info && info->isEjectable ? *info->isEjectable : false;
    }

    volume.isReadOnly = record.isReadOnly;
    volume.isNetwork = !record.isLocal;
    volume.isBootVolume = record.isRootFileSystem;
    volume.isEncrypted = info ? info->isEncrypted : std::nullopt;
    volume.ownershipEnabled = info ? info->ownershipEnabled : std::nullopt;
    volume.supportsCaseSensitiveNames = record.supportsCaseSensitiveNames;
    volume.busProtocol = info ? info->busProtocol : std::nullopt;
    volume.containerID = info ? info->containerReference : std::nullopt;
    return volume;
}

void StorageDiscovery::sortDisks(std::vector<PhysicalDisk>& disks) {
    std::stable_sort(disks.begin(), disks.end(), [](const PhysicalDisk& a, const PhysicalDisk& b) {
        if (a.isInternal != b.isInternal) return a.isInternal;
        return a.id < b.id;
    });
}

void StorageDiscovery::sortVolumes(std::vector<StorageVolume>& volumes) {
    std::stable_sort(volumes.begin(), volumes.end(), [](const StorageVolume& a, const StorageVolume& b) {
        if (a.isBootVolume != b.isBootVolume) return a.isBootVolume;
        if (a.isBootVolume) return false;
        return a.name < b.name;
    });
}

}  // namespace corvel
