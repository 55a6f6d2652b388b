#include "storage/DiskutilParser.h"

#include <cmath>
#include <limits>

#include "common/Text.h"

namespace corvel::DiskutilParser {

namespace {

using Value = PropertyListValue;

// A list whose every element is a dictionary, as the tool's documents promise; one stray
// element makes the whole list unusable, the same way a typed cast of the list would fail.
std::optional<std::vector<const Value*>> dictionaryList(const Value* value) {
    if (!value || !value->isArray()) return std::nullopt;
    std::vector<const Value*> result;
    for (const auto& item : *value->asArray()) {
        if (!item.isDictionary()) return std::nullopt;
        result.push_back(&item);
    }
    return result;
}

const Value* member(const Value& dictionary, std::string_view key) { return dictionary.find(key); }

std::optional<std::string> stringValue(const Value& dictionary, std::string_view key) {
    const Value* value = member(dictionary, key);
    if (!value || !value->asString()) return std::nullopt;
    return *value->asString();
}

// Trimmed text; absent when missing, not a string, or blank.
std::optional<std::string> trimmedString(const Value& dictionary, std::string_view key) {
    auto text = stringValue(dictionary, key);
    if (!text) return std::nullopt;
    std::string trimmed(trim(*text));
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::optional<bool> booleanValue(const Value& dictionary, std::string_view key) {
    const Value* value = member(dictionary, key);
    return value ? value->asBoolean() : std::nullopt;
}

Value readRoot(std::string_view bytes) {
    Value root = PropertyList::parse(bytes);
    if (!root.isDictionary()) throw DiskutilParseError::notADictionary();
    return root;
}

Partition makePartition(const Value& entry, const std::string& id) {
    Partition partition;
    partition.id = id;
    partition.content = stringValue(entry, "Content").value_or("");
    partition.sizeBytes = int64(member(entry, "Size")).value_or(0);
    partition.volumeName = trimmedString(entry, "VolumeName");
    partition.uuid = trimmedString(entry, "DiskUUID");
    return partition;
}

std::vector<Partition> parsePartitions(const Value& disk) {
    std::vector<Partition> partitions;
    auto entries = dictionaryList(member(disk, "Partitions"));
    if (!entries) return partitions;
    for (const Value* entry : *entries) {
        auto id = stringValue(*entry, "DeviceIdentifier");
        if (!id) continue;
        partitions.push_back(makePartition(*entry, *id));
    }
    return partitions;
}

// The NVMe lookup rule: the key itself, else its low "_0" half.
std::optional<std::int64_t> counter(const Value& dictionary, const std::string& key) {
    if (auto value = int64(member(dictionary, key))) return value;
    return int64(member(dictionary, key + "_0"));
}

APFSVolumeEntry makeAPFSVolume(const Value& entry, const std::string& id) {
    APFSVolumeEntry volume;
    volume.id = id;
    volume.uuid = trimmedString(entry, "APFSVolumeUUID");
    volume.name = stringValue(entry, "Name").value_or(id);
    if (const Value* roles = member(entry, "Roles"); roles && roles->asArray()) {
        for (const auto& role : *roles->asArray()) {
            if (role.asString()) volume.roles.push_back(*role.asString());
        }
    }
    volume.capacityInUse = int64(member(entry, "CapacityInUse")).value_or(0);
    volume.isEncrypted = booleanValue(entry, "Encryption").value_or(false);
    volume.isFileVault = booleanValue(entry, "FileVault").value_or(false);
    volume.isLocked = booleanValue(entry, "Locked").value_or(false);
    return volume;
}

APFSContainer makeAPFSContainer(const Value& entry, const std::string& id) {
    APFSContainer container;
    container.id = id;
    container.uuid = trimmedString(entry, "APFSContainerUUID");
    container.capacityCeiling = int64(member(entry, "CapacityCeiling")).value_or(0);
    container.capacityFree = int64(member(entry, "CapacityFree")).value_or(0);
    if (auto stores = dictionaryList(member(entry, "PhysicalStores"))) {
        for (const Value* store : *stores) {
            if (auto storeID = stringValue(*store, "DeviceIdentifier")) container.physicalStores.push_back(*storeID);
        }
    }
    if (auto volumes = dictionaryList(member(entry, "Volumes"))) {
        for (const Value* volume : *volumes) {
            if (auto volumeID = stringValue(*volume, "DeviceIdentifier")) {
                container.volumes.push_back(makeAPFSVolume(*volume, *volumeID));
            }
        }
    }
    return container;
}

}  // namespace

std::optional<std::int64_t> int64(const PropertyListValue* value) {
    if (!value) return std::nullopt;
    if (auto integer = value->asInteger()) return integer;
    if (auto real = value->asReal()) {
        double truncated = std::trunc(*real);
        // Outside this range the conversion would be undefined; such a value is not a byte count.
        if (!std::isfinite(truncated) || truncated < -9223372036854775808.0 || truncated >= 9223372036854775808.0) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(truncated);
    }
    return std::nullopt;
}

std::string wholeDiskIdentifier(std::string_view identifier) {
    constexpr std::string_view prefix = "disk";
    if (identifier.substr(0, prefix.size()) != prefix) return std::string(identifier);
    std::size_t end = prefix.size();
    while (end < identifier.size() && identifier[end] >= '0' && identifier[end] <= '9') ++end;
    if (end == prefix.size()) return std::string(identifier);
    return std::string(identifier.substr(0, end));
}

std::vector<ListedDisk> parseList(std::string_view bytes) {
    Value root = readRoot(bytes);
    auto entries = dictionaryList(root.find("AllDisksAndPartitions"));
    if (!entries) throw DiskutilParseError::missingKey("AllDisksAndPartitions");
    std::vector<ListedDisk> disks;
    for (const Value* entry : *entries) {
        auto id = stringValue(*entry, "DeviceIdentifier");
        if (!id) continue;
        ListedDisk disk;
        disk.id = *id;
        disk.content = stringValue(*entry, "Content");
        disk.sizeBytes = int64(member(*entry, "Size")).value_or(0);
        disk.partitions = parsePartitions(*entry);
        disks.push_back(std::move(disk));
    }
    return disks;
}

PhysicalDisk parsePhysicalDisk(std::string_view bytes, const std::optional<ListedDisk>& listed) {
    Value root = readRoot(bytes);
    auto id = stringValue(root, "DeviceIdentifier");
    if (!id) throw DiskutilParseError::missingKey("DeviceIdentifier");

    PhysicalDisk disk;
    disk.id = *id;

    // Some bridges report a blank media name but a useful registry name.
    if (trimmedString(root, "MediaName")) {
        disk.mediaName = *stringValue(root, "MediaName");
    } else if (trimmedString(root, "IORegistryEntryName")) {
        disk.mediaName = *stringValue(root, "IORegistryEntryName");
    } else {
        disk.mediaName = *id;
    }

    if (auto total = int64(member(root, "TotalSize"))) {
        disk.sizeBytes = *total;
    } else if (auto size = int64(member(root, "Size"))) {
        disk.sizeBytes = *size;
    } else {
        disk.sizeBytes = listed ? listed->sizeBytes : 0;
    }

    disk.busProtocol = trimmedString(root, "BusProtocol");
    disk.isInternal = booleanValue(root, "Internal").value_or(false);
    // A disk the tool calls removable but not ejectable can still be taken away.
    disk.isEjectable = booleanValue(root, "Ejectable").value_or(false)
                           ? true
                           : booleanValue(root, "RemovableMedia").value_or(false);
    disk.isSolidState = booleanValue(root, "SolidState");

    if (auto content = stringValue(root, "Content")) {
        std::string trimmed(trim(*content));
        if (!trimmed.empty()) disk.partitionScheme = trimmed;
    } else if (listed) {
        disk.partitionScheme = listed->content;
    }

    disk.blockSize = int64(member(root, "DeviceBlockSize"));
    disk.smartStatus = smartStatusFromDiskutil(stringValue(root, "SMARTStatus"));
    if (const Value* nvme = member(root, "SMARTDeviceSpecificKeysMayVaryNotGuaranteed"); nvme && nvme->isDictionary()) {
        disk.nvme = parseNVMe(*nvme);
    }
    if (listed) disk.partitions = listed->partitions;
    return disk;
}

std::optional<NVMeHealth> parseNVMe(const PropertyListValue& dictionary) {
    const auto* entries = dictionary.asDictionary();
    if (!entries || entries->empty()) return std::nullopt;
    NVMeHealth health;
    // The tool reports kelvin; zero means "no sensor", not absolute zero.
    if (auto kelvin = counter(dictionary, "TEMPERATURE"); kelvin && *kelvin >= 1) {
        health.temperatureCelsius = static_cast<double>(*kelvin) - 273.15;
    }
    health.percentageUsed = counter(dictionary, "PERCENTAGE_USED");
    health.availableSpare = counter(dictionary, "AVAILABLE_SPARE");
    health.availableSpareThreshold = counter(dictionary, "AVAILABLE_SPARE_THRESHOLD");
    health.mediaErrors = counter(dictionary, "MEDIA_ERRORS");
    health.errorLogEntries = counter(dictionary, "NUM_ERROR_INFO_LOG_ENTRIES");
    health.powerOnHours = counter(dictionary, "POWER_ON_HOURS");
    health.powerCycles = counter(dictionary, "POWER_CYCLES");
    health.unsafeShutdowns = counter(dictionary, "UNSAFE_SHUTDOWNS");
    health.dataUnitsRead = counter(dictionary, "DATA_UNITS_READ");
    health.dataUnitsWritten = counter(dictionary, "DATA_UNITS_WRITTEN");
    return health;
}

DiskutilVolumeInfo parseVolumeInfo(std::string_view bytes) {
    Value root = readRoot(bytes);
    DiskutilVolumeInfo info;
    info.deviceIdentifier = trimmedString(root, "DeviceIdentifier");
    info.volumeName = trimmedString(root, "VolumeName");
    info.volumeUUID = trimmedString(root, "VolumeUUID");
    info.mountPoint = trimmedString(root, "MountPoint");
    info.fileSystemType = trimmedString(root, "FilesystemType");
    info.fileSystemName = trimmedString(root, "FilesystemName");
    info.busProtocol = trimmedString(root, "BusProtocol");
    info.isInternal = booleanValue(root, "Internal");
    info.isEjectable = booleanValue(root, "Ejectable");
    info.isWritable = booleanValue(root, "WritableVolume");
    info.isFileVault = booleanValue(root, "FileVault");
    info.isEncrypted = booleanValue(root, "Encryption");
    if (!info.isEncrypted) info.isEncrypted = info.isFileVault;
    info.ownershipEnabled = booleanValue(root, "GlobalPermissionsEnabled");
    info.parentWholeDisk = trimmedString(root, "ParentWholeDisk");
    info.containerReference = trimmedString(root, "APFSContainerReference");
    info.containerFreeBytes = int64(member(root, "APFSContainerFree"));
    if (auto stores = dictionaryList(member(root, "APFSPhysicalStores"))) {
        for (const Value* store : *stores) {
            if (auto storeID = stringValue(*store, "APFSPhysicalStore")) info.physicalStores.push_back(*storeID);
        }
    }
    return info;
}

std::vector<APFSContainer> parseAPFSList(std::string_view bytes) {
    Value root = readRoot(bytes);
    auto entries = dictionaryList(root.find("Containers"));
    if (!entries) throw DiskutilParseError::missingKey("Containers");
    std::vector<APFSContainer> containers;
    for (const Value* entry : *entries) {
        auto id = stringValue(*entry, "ContainerReference");
        if (!id) continue;
        containers.push_back(makeAPFSContainer(*entry, *id));
    }
    return containers;
}

}  // namespace corvel::DiskutilParser
