// The resource values the macOS file manager reports for one mounted volume, and the pure
// decisions that turn them into a MountedVolumeRecord (which volume counts as the root, which
// hidden ones are dropped, which name is shown). Kept apart from the platform call so that the
// rules are tested everywhere.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "storage/MountedVolumeRecord.h"

namespace corvel {

struct VolumeResourceValues {
    std::optional<std::string> volumeName;
    std::optional<std::string> localizedName;
    std::optional<std::int64_t> totalCapacity;
    std::optional<std::int64_t> availableCapacity;
    std::optional<std::int64_t> availableCapacityForImportantUsage;
    std::optional<bool> isInternal;
    std::optional<bool> isEjectable;
    std::optional<bool> isRemovable;
    std::optional<bool> isLocal;
    std::optional<bool> isReadOnly;
    std::optional<bool> isRootFileSystem;
    std::optional<std::string> typeName;
    std::optional<std::string> uuid;
    std::optional<bool> supportsCaseSensitiveNames;
    std::optional<bool> isBrowsable;

    bool operator==(const VolumeResourceValues&) const = default;

    // The record for the volume mounted at `path`; absent when it is a hidden (not browsable)
    // volume other than the root file system.
    static std::optional<MountedVolumeRecord> makeRecord(const std::string& path, const VolumeResourceValues& values);
};

}  // namespace corvel
