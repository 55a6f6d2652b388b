#include "storage/MountedVolumeRecord.h"

namespace corvel {

void to_json(Json& j, const MountedVolumeRecord& r) {
    j = Json{{"path", r.path}, {"name", r.name}, {"totalBytes", r.totalBytes}, {"availableBytes", r.availableBytes}};
    putOptional(j, "importantAvailableBytes", r.importantAvailableBytes);
    putOptional(j, "isInternal", r.isInternal);
    putOptional(j, "isEjectable", r.isEjectable);
    putOptional(j, "isRemovable", r.isRemovable);
    j["isLocal"] = r.isLocal;
    j["isReadOnly"] = r.isReadOnly;
    j["isRootFileSystem"] = r.isRootFileSystem;
    putOptional(j, "typeName", r.typeName);
    putOptional(j, "uuid", r.uuid);
    putOptional(j, "supportsCaseSensitiveNames", r.supportsCaseSensitiveNames);
}

// Recordings are written by hand, so the flags that have an obvious default may be left out.
void from_json(const Json& j, MountedVolumeRecord& r) {
    r.path = required<std::string>(j, "path");
    r.name = valueOr<std::string>(j, "name", "");
    r.totalBytes = required<std::int64_t>(j, "totalBytes");
    r.availableBytes = required<std::int64_t>(j, "availableBytes");
    r.importantAvailableBytes = optionalValue<std::int64_t>(j, "importantAvailableBytes");
    r.isInternal = optionalValue<bool>(j, "isInternal");
    r.isEjectable = optionalValue<bool>(j, "isEjectable");
    r.isRemovable = optionalValue<bool>(j, "isRemovable");
    r.isLocal = valueOr<bool>(j, "isLocal", true);
    r.isReadOnly = valueOr<bool>(j, "isReadOnly", false);
    r.isRootFileSystem = valueOr<bool>(j, "isRootFileSystem", r.path == "/");
    r.typeName = optionalValue<std::string>(j, "typeName");
    r.uuid = optionalValue<std::string>(j, "uuid");
    r.supportsCaseSensitiveNames = optionalValue<bool>(j, "supportsCaseSensitiveNames");
}

}  // namespace corvel
