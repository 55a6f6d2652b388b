#include "monitoring/MountChange.h"

#include <set>
#include <string>

namespace corvel::MountChange {
namespace {

std::vector<StorageVolume> missingFrom(const std::vector<StorageVolume>& volumes,
                                       const std::vector<StorageVolume>& others) {
    std::set<std::string> ids;
    for (const auto& volume : others) ids.insert(volume.id);
    std::vector<StorageVolume> missing;
    for (const auto& volume : volumes)
        if (!ids.count(volume.id)) missing.push_back(volume);
    return missing;
}

}  // namespace

Diff diff(const std::vector<StorageVolume>& previous, const std::vector<StorageVolume>& current) {
    return {missingFrom(current, previous), missingFrom(previous, current)};
}

Diff diff(const StorageSnapshot& previous, const StorageSnapshot& current) {
    return diff(previous.volumes, current.volumes);
}

}  // namespace corvel::MountChange
