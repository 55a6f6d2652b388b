// Which volumes appeared and which disappeared between two snapshots. A volume is the same volume
// when its id is the same text; a volume whose id changed therefore shows as both.
//
//   auto change = MountChange::diff(previous, current);
//   for (const auto& volume : change.unmounted) warn(volume.name + " was unmounted");
#pragma once

#include "storage/StorageSnapshot.h"
#include "storage/StorageVolume.h"

#include <vector>

namespace corvel::MountChange {

struct Diff {
    std::vector<StorageVolume> mounted;    // in `current`, absent from `previous`, in current's order
    std::vector<StorageVolume> unmounted;  // in `previous`, absent from `current`, in previous's order

    bool empty() const { return mounted.empty() && unmounted.empty(); }
    bool operator==(const Diff&) const = default;
};

Diff diff(const std::vector<StorageVolume>& previous, const std::vector<StorageVolume>& current);
Diff diff(const StorageSnapshot& previous, const StorageSnapshot& current);

}  // namespace corvel::MountChange
