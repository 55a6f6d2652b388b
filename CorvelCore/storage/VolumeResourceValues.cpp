#include "storage/VolumeResourceValues.h"

namespace corvel {

std::optional<MountedVolumeRecord> VolumeResourceValues::makeRecord(const std::string& path,
                                                                    const VolumeResourceValues& values) {
    bool isRoot = values.isRootFileSystem.value_or(path == "/");
    // Preboot, VM, Update and friends are mounted but not meant to be seen; the root always is.
    if (values.isBrowsable == false && !isRoot) return std::nullopt;

    MountedVolumeRecord record;
    record.path = path;
    if (values.localizedName) {
        record.name = *values.localizedName;
    } else if (values.volumeName) {
        record.name = *values.volumeName;
    } else {
        auto slash = path.find_last_of('/');
        std::string last = slash == std::string::npos ? path : path.substr(slash + 1);
        record.name = last.empty() ? path : last;
    }
    record.totalBytes = values.totalCapacity.value_or(0);
    record.availableBytes = values.availableCapacity.value_or(0);
    record.importantAvailableBytes = values.availableCapacityForImportantUsage;
    record.isInternal = values.isInternal;
    record.isEjectable = values.isEjectable;
    record.isRemovable = values.isRemovable;
    // A volume that does not say is treated as local: asking the disk tool about it is harmless,
    // while calling it a network share would hide it from every local-capacity figure.
    record.isLocal = values.isLocal.value_or(true);
    record.isReadOnly = values.isReadOnly.value_or(false);
    record.isRootFileSystem = isRoot;
    record.typeName = values.typeName;
    record.uuid = values.uuid;
    record.supportsCaseSensitiveNames = values.supportsCaseSensitiveNames;
    return record;
}

}  // namespace corvel
