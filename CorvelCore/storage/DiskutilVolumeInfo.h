// What the disk tool's `info` document says about one volume. Every field is optional because
// the tool leaves out whatever does not apply (a network share has no container, an HFS volume
// no physical stores).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Json.h"

namespace corvel {

struct DiskutilVolumeInfo {
    std::optional<std::string> deviceIdentifier;
    std::optional<std::string> volumeName;
    std::optional<std::string> volumeUUID;
    std::optional<std::string> mountPoint;
    std::optional<std::string> fileSystemType;
    std::optional<std::string> fileSystemName;
    std::optional<std::string> busProtocol;
    std::optional<bool> isInternal;
    std::optional<bool> isEjectable;
    std::optional<bool> isWritable;
    std::optional<bool> isEncrypted;
    std::optional<bool> isFileVault;
    std::optional<bool> ownershipEnabled;
    std::optional<std::string> parentWholeDisk;
    std::optional<std::string> containerReference;
    std::optional<std::int64_t> containerFreeBytes;
    std::vector<std::string> physicalStores;

    bool operator==(const DiskutilVolumeInfo&) const = default;
};

inline void to_json(Json& j, const DiskutilVolumeInfo& v) {
    j = Json::object();
    putOptional(j, "deviceIdentifier", v.deviceIdentifier);
    putOptional(j, "volumeName", v.volumeName);
    putOptional(j, "volumeUUID", v.volumeUUID);
    putOptional(j, "mountPoint", v.mountPoint);
    putOptional(j, "fileSystemType", v.fileSystemType);
    putOptional(j, "fileSystemName", v.fileSystemName);
    putOptional(j, "busProtocol", v.busProtocol);
    putOptional(j, "isInternal", v.isInternal);
    putOptional(j, "isEjectable", v.isEjectable);
    putOptional(j, "isWritable", v.isWritable);
    putOptional(j, "isEncrypted", v.isEncrypted);
    putOptional(j, "isFileVault", v.isFileVault);
    putOptional(j, "ownershipEnabled", v.ownershipEnabled);
    putOptional(j, "parentWholeDisk", v.parentWholeDisk);
    putOptional(j, "containerReference", v.containerReference);
    putOptional(j, "containerFreeBytes", v.containerFreeBytes);
    j["physicalStores"] = v.physicalStores;
}

inline void from_json(const Json& j, DiskutilVolumeInfo& v) {
    v.deviceIdentifier = optionalValue<std::string>(j, "deviceIdentifier");
    v.volumeName = optionalValue<std::string>(j, "volumeName");
    v.volumeUUID = optionalValue<std::string>(j, "volumeUUID");
    v.mountPoint = optionalValue<std::string>(j, "mountPoint");
    v.fileSystemType = optionalValue<std::string>(j, "fileSystemType");
    v.fileSystemName = optionalValue<std::string>(j, "fileSystemName");
    v.busProtocol = optionalValue<std::string>(j, "busProtocol");
    v.isInternal = optionalValue<bool>(j, "isInternal");
    v.isEjectable = optionalValue<bool>(j, "isEjectable");
    v.isWritable = optionalValue<bool>(j, "isWritable");
    v.isEncrypted = optionalValue<bool>(j, "isEncrypted");
    v.isFileVault = optionalValue<bool>(j, "isFileVault");
    v.ownershipEnabled = optionalValue<bool>(j, "ownershipEnabled");
    v.parentWholeDisk = optionalValue<std::string>(j, "parentWholeDisk");
    v.containerReference = optionalValue<std::string>(j, "containerReference");
    v.containerFreeBytes = optionalValue<std::int64_t>(j, "containerFreeBytes");
    v.physicalStores = required<std::vector<std::string>>(j, "physicalStores");
}

}  // namespace corvel
