#include "storage/StorageVolume.h"

#include "common/CheckedArithmetic.h"
#include "common/Text.h"

#include <algorithm>

namespace corvel {

std::int64_t StorageVolume::usedBytes() const {
    return std::max<std::int64_t>(
        checkedSubtract(checkedSubtract(totalBytes, availableBytes), reservedBytes.value_or(0)), 0);
}

double StorageVolume::usedFraction() const {
    const std::int64_t usable = checkedSubtract(totalBytes, std::max<std::int64_t>(reservedBytes.value_or(0), 0));
    if (totalBytes < 1 || usable < 1) return 0;
    return std::clamp(static_cast<double>(usedBytes()) / static_cast<double>(usable), 0.0, 1.0);
}

double StorageVolume::freeFraction() const {
    if (totalBytes < 1) return 0;
    return 1.0 - usedFraction();
}

std::string StorageVolume::fileSystemLabel() const {
    if (fileSystemName) return *fileSystemName;
    if (fileSystemType) return toUpper(*fileSystemType);
    return "Unknown";
}

void to_json(Json& j, const StorageVolume& v) {
    j = Json{{"id", v.id}, {"name", v.name}, {"mountPoint", v.mountPoint}};
    putOptional(j, "bsdName", v.bsdName);
    putOptional(j, "fileSystemType", v.fileSystemType);
    putOptional(j, "fileSystemName", v.fileSystemName);
    j["totalBytes"] = v.totalBytes;
    j["availableBytes"] = v.availableBytes;
    putOptional(j, "reservedBytes", v.reservedBytes);
    j["isInternal"] = v.isInternal;
    j["isEjectable"] = v.isEjectable;
    j["isReadOnly"] = v.isReadOnly;
    j["isNetwork"] = v.isNetwork;
    j["isBootVolume"] = v.isBootVolume;
    putOptional(j, "isEncrypted", v.isEncrypted);
    putOptional(j, "ownershipEnabled", v.ownershipEnabled);
    putOptional(j, "supportsCaseSensitiveNames", v.supportsCaseSensitiveNames);
    putOptional(j, "busProtocol", v.busProtocol);
    putOptional(j, "containerID", v.containerID);
    putOptional(j, "physicalDiskID", v.physicalDiskID);
}

void from_json(const Json& j, StorageVolume& v) {
    v.id = required<std::string>(j, "id");
    v.name = required<std::string>(j, "name");
    v.mountPoint = required<std::string>(j, "mountPoint");
    v.bsdName = optionalValue<std::string>(j, "bsdName");
    v.fileSystemType = optionalValue<std::string>(j, "fileSystemType");
    v.fileSystemName = optionalValue<std::string>(j, "fileSystemName");
    v.totalBytes = required<std::int64_t>(j, "totalBytes");
    v.availableBytes = required<std::int64_t>(j, "availableBytes");
    v.reservedBytes = optionalValue<std::int64_t>(j, "reservedBytes");
    v.isInternal = required<bool>(j, "isInternal");
    v.isEjectable = required<bool>(j, "isEjectable");
    v.isReadOnly = required<bool>(j, "isReadOnly");
    v.isNetwork = required<bool>(j, "isNetwork");
    v.isBootVolume = required<bool>(j, "isBootVolume");
    v.isEncrypted = optionalValue<bool>(j, "isEncrypted");
    v.ownershipEnabled = optionalValue<bool>(j, "ownershipEnabled");
    v.supportsCaseSensitiveNames = optionalValue<bool>(j, "supportsCaseSensitiveNames");
    v.busProtocol = optionalValue<std::string>(j, "busProtocol");
    v.containerID = optionalValue<std::string>(j, "containerID");
    v.physicalDiskID = optionalValue<std::string>(j, "physicalDiskID");
}

}  // namespace corvel
