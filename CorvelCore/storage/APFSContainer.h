// An APFS container and its volumes as the disk tool's APFS list describes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Json.h"

namespace corvel {

struct APFSVolumeEntry {
    std::string id;
    std::optional<std::string> uuid;
    std::string name;
    std::vector<std::string> roles;
    std::int64_t capacityInUse = 0;
    bool isEncrypted = false;
    bool isFileVault = false;
    bool isLocked = false;

    bool operator==(const APFSVolumeEntry&) const = default;
};

struct APFSContainer {
    std::string id;
    std::optional<std::string> uuid;
    std::int64_t capacityCeiling = 0;
    std::int64_t capacityFree = 0;
    std::vector<std::string> physicalStores;
    std::vector<APFSVolumeEntry> volumes;

    bool operator==(const APFSContainer&) const = default;
};

inline void to_json(Json& j, const APFSVolumeEntry& v) {
    j = Json::object();
    j["id"] = v.id;
    putOptional(j, "uuid", v.uuid);
    j["name"] = v.name;
    j["roles"] = v.roles;
    j["capacityInUse"] = v.capacityInUse;
    j["isEncrypted"] = v.isEncrypted;
    j["isFileVault"] = v.isFileVault;
    j["isLocked"] = v.isLocked;
}

inline void from_json(const Json& j, APFSVolumeEntry& v) {
    v.id = required<std::string>(j, "id");
    v.uuid = optionalValue<std::string>(j, "uuid");
    v.name = required<std::string>(j, "name");
    v.roles = required<std::vector<std::string>>(j, "roles");
    v.capacityInUse = required<std::int64_t>(j, "capacityInUse");
    v.isEncrypted = required<bool>(j, "isEncrypted");
    v.isFileVault = required<bool>(j, "isFileVault");
    v.isLocked = required<bool>(j, "isLocked");
}

inline void to_json(Json& j, const APFSContainer& c) {
    j = Json::object();
    j["id"] = c.id;
    putOptional(j, "uuid", c.uuid);
    j["capacityCeiling"] = c.capacityCeiling;
    j["capacityFree"] = c.capacityFree;
    j["physicalStores"] = c.physicalStores;
    j["volumes"] = c.volumes;
}

inline void from_json(const Json& j, APFSContainer& c) {
    c.id = required<std::string>(j, "id");
    c.uuid = optionalValue<std::string>(j, "uuid");
    c.capacityCeiling = required<std::int64_t>(j, "capacityCeiling");
    c.capacityFree = required<std::int64_t>(j, "capacityFree");
    c.physicalStores = required<std::vector<std::string>>(j, "physicalStores");
    c.volumes = required<std::vector<APFSVolumeEntry>>(j, "volumes");
}

}  // namespace corvel
