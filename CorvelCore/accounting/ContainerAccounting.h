// Reads the account of a Mac volume, which is the account of its APFS container: all volumes of
// a container share its free space, so the container's capacity and free space frame the split.
// Each volume besides the one holding the person's files (the Data volume of the boot container)
// is a part of its own with its role; local snapshots, purgeable space and the last scan explain
// the rest, and the remainder closes the split. APFS does not report what a snapshot holds, so
// the snapshot row reads unknown with the snapshots listed; it is 0 only when there are none.
//
//   ContainerAccounting::Listings listings{.snapshots = parsed, .purgeableBytes = 18640000000};
//   StorageAccount account = ContainerAccounting::split(container, "disk3s5", listings);
#pragma once

#include "accounting/AccountingSources.h"
#include "accounting/StorageAccount.h"
#include "command/CommandRunning.h"
#include "space/SpaceSummary.h"
#include "storage/APFSContainer.h"
#include "storage/MountedVolumeRecord.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel::ContainerAccounting {

// What was read beside the container.
struct Listings {
    bool keepsSnapshots = true;                           // false: no snapshot row (not APFS)
    std::optional<std::vector<LocalSnapshot>> snapshots;  // absent: no listing could be read
    std::optional<std::int64_t> purgeableBytes;
    std::optional<SpaceSummary> lastScan;  // only when its folder lies in this container
};

// The part a volume of this role is counted under (System, Preboot, Recovery, VM; others).
AccountingPart partOfRoles(const std::vector<std::string>& roles);

// The volume whose space the snapshots, purgeable space and the scan explain: the container's
// Data volume when `chosenID` is its System volume (the two form the volume group the system
// boots), else the chosen volume itself.
std::string mainVolumeID(const APFSContainer& container, const std::string& chosenID);

// The gap between a volume's important-use and plain available space; absent when either figure
// is missing or negative.
std::optional<std::int64_t> purgeableOf(const MountedVolumeRecord& record);

// Pure: the container's capacity and free space, one row per volume other than `mainID`, then
// snapshots, purgeable space, the last scan and the remainder. Never throws; volume sizes that
// cannot be added in 64 bits leave the remainder out with a warning.
StorageAccount split(const APFSContainer& container, const std::string& mainID, const Listings& listings);

// Runs the listings for `volume` of `snapshot`: the APFS list, the main volume's snapshots, Time
// Machine's list when `timeMachine` (the boot container of a Mac that has tmutil) and the
// purgeable figure. Never throws: a listing that fails is one warning, its row reads unknown.
StorageAccount read(const StorageVolume& volume, const StorageSnapshot& snapshot, AccountingSources& sources,
                    CommandRunning& runner, bool timeMachine, const std::optional<SpaceSummary>& lastScan);

}  // namespace corvel::ContainerAccounting
