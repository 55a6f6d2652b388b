// What the file system itself says of one mounted volume, before the disk tool adds its view.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct MountedVolumeRecord {
    std::string path;
    std::string name;
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0;
    std::optional<std::int64_t> importantAvailableBytes;  // counts purgeable space as free
    std::optional<bool> isInternal;
    std::optional<bool> isEjectable;
    std::optional<bool> isRemovable;
    bool isLocal = true;
    bool isReadOnly = false;
    bool isRootFileSystem = false;
    std::optional<std::string> typeName;
    std::optional<std::string> uuid;
    std::optional<bool> supportsCaseSensitiveNames;

    // The "important use" figure when the system gives a positive one, else the plain figure.
    std::int64_t effectiveAvailableBytes() const {
        return importantAvailableBytes && *importantAvailableBytes > 0 ? *importantAvailableBytes : availableBytes;
    }

    bool operator==(const MountedVolumeRecord&) const = default;
};

void to_json(Json& j, const MountedVolumeRecord& record);
void from_json(const Json& j, MountedVolumeRecord& record);

// The platform's list of mounted volumes; tests and replay supply fixed lists.
class MountedVolumeProviding {
public:
    virtual ~MountedVolumeProviding() = default;
    virtual std::vector<MountedVolumeRecord> mountedVolumes() = 0;
};

// A fixed list, for recorded machines and tests.
class FixedVolumeProvider : public MountedVolumeProviding {
public:
    explicit FixedVolumeProvider(std::vector<MountedVolumeRecord> volumes) : volumes_(std::move(volumes)) {}
    std::vector<MountedVolumeRecord> mountedVolumes() override { return volumes_; }

private:
    std::vector<MountedVolumeRecord> volumes_;
};

}  // namespace corvel
