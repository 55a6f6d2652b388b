#include "storage/StorageSnapshot.h"

#include "common/CheckedArithmetic.h"

#include <algorithm>
#include <unordered_set>

namespace corvel {

TimePoint distantPast() {
    // 0001-01-01T00:00:00Z is 62135596800 seconds before the Unix epoch.
    return TimePoint(std::chrono::seconds(-62135596800LL));
}

const StorageSnapshot& StorageSnapshot::empty() {
    static const StorageSnapshot instance{distantPast(), {}, {}, {}};
    return instance;
}

std::optional<StorageVolume> StorageSnapshot::volume(const std::string& id) const {
    const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const auto& v) { return v.id == id; });
    if (found == volumes.end()) return std::nullopt;
    return *found;
}

std::optional<PhysicalDisk> StorageSnapshot::disk(const std::string& id) const {
    const auto found = std::find_if(disks.begin(), disks.end(), [&](const auto& d) { return d.id == id; });
    if (found == disks.end()) return std::nullopt;
    return *found;
}

std::vector<StorageVolume> StorageSnapshot::volumesOn(const PhysicalDisk& onDisk) const {
    std::vector<StorageVolume> result;
    for (const auto& v : volumes)
        if (v.physicalDiskID && *v.physicalDiskID == onDisk.id) result.push_back(v);
    return result;
}

std::vector<StorageVolume> StorageSnapshot::unassignedVolumes() const {
    std::vector<StorageVolume> result;
    for (const auto& v : volumes)
        if (!v.physicalDiskID || !disk(*v.physicalDiskID)) result.push_back(v);
    return result;
}

LocalCapacity StorageSnapshot::distinctLocalCapacity() const {
    LocalCapacity capacity;
    std::unordered_set<std::string> seen;
    for (const auto& v : volumes) {
        if (v.isNetwork) continue;
        if (!seen.insert(v.containerID.value_or(v.id)).second) continue;
        capacity.total = checkedAdd(capacity.total, v.totalBytes);
        capacity.available = checkedAdd(capacity.available, v.availableBytes);
    }
    return capacity;
}

}  // namespace corvel
