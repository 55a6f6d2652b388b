#include "accounting/ContainerAccounting.h"

#include "accounting/ListingParseError.h"
#include "accounting/LocalSnapshotClient.h"
#include "accounting/SnapshotListParser.h"
#include "accounting/StorageAccounting.h"
#include "command/DiskutilClient.h"
#include "common/CheckedArithmetic.h"
#include "storage/DiskutilParser.h"

#include <algorithm>
#include <array>
#include <exception>
#include <string_view>
#include <utility>

namespace corvel::ContainerAccounting {
namespace {

constexpr const char* apfsListSource = "diskutil apfs list";
constexpr const char* apfsSnapshotSource = "diskutil apfs listSnapshots";
constexpr const char* timeMachineSource = "tmutil listlocalsnapshots";
constexpr const char* purgeableSource = "important-use capacity";
constexpr const char* summarySource = "velmora scan";

constexpr std::array<std::pair<std::string_view, AccountingPart>, 4> roleParts{{
    {"System", AccountingPart::systemVolume},
    {"Preboot", AccountingPart::prebootVolume},
    {"Recovery", AccountingPart::recoveryVolume},
    {"VM", AccountingPart::vmVolume},
}};

// The booted System volume is mounted from its sealed snapshot, whose device adds a slice to the
// volume's ("disk3s1s1" for "disk3s1").
bool isVolumeOrItsSnapshot(const std::string& volumeID, const std::string& deviceID) {
    return deviceID == volumeID || (deviceID.starts_with(volumeID + "s") && deviceID.size() > volumeID.size() + 1);
}

bool hasRole(const APFSVolumeEntry& volume, std::string_view role) {
    return std::find(volume.roles.begin(), volume.roles.end(), role) != volume.roles.end();
}

std::string snapshotDetail(std::size_t count, bool sized) {
    if (count == 0) return "none";
    std::string text = std::to_string(count) + (count == 1 ? " snapshot" : " snapshots");
    return sized ? text : text + ", sizes not reported by APFS";
}

void addSnapshots(StorageAccount& account, const Listings& listings) {
    if (!listings.snapshots) {
        account.rows.push_back({AccountingPart::snapshots, std::nullopt, apfsSnapshotSource, ""});
        return;
    }
    account.snapshots = *listings.snapshots;
    std::vector<std::optional<std::int64_t>> sizes;
    for (const auto& snapshot : account.snapshots) sizes.push_back(snapshot.bytes);
    // APFS names no snapshot's own blocks, so one listed snapshot makes the row unknown; only an
    // empty list is a known 0. What purgeable snapshots hold is inside the purgeable figure, which
    // is why a sized snapshot row and that figure can never both count the same blocks here.
    const auto bytes = StorageAccounting::sum(sizes);
    account.rows.push_back({AccountingPart::snapshots, bytes, apfsSnapshotSource,
                            snapshotDetail(account.snapshots.size(), bytes.has_value())});
}

void addLastScan(StorageAccount& account, const std::optional<SpaceSummary>& lastScan) {
    if (!lastScan) return;
    account.scannedFolder = lastScan->root;
    account.scannedAt = lastScan->scannedAt;
    account.rows.push_back({AccountingPart::seenByLastScan, lastScan->allocatedBytes, summarySource,
                            lastScan->wasCancelled ? "cancelled part way" : ""});
}

std::optional<APFSContainer> containerOf(const StorageVolume& volume, CommandRunning& runner,
                                         std::vector<std::string>& warnings) {
    if (!volume.containerID) return std::nullopt;
    try {
        for (auto& container : DiskutilParser::parseAPFSList(DiskutilClient(runner).apfsList()))
            if (container.id == *volume.containerID) return std::move(container);
        warnings.push_back(std::string(apfsListSource) + ": container " + *volume.containerID + " is not listed");
    } catch (const std::exception& error) {
        warnings.push_back(std::string(apfsListSource) + ": " + error.what());
    }
    return std::nullopt;
}

// Whether the last scan's folder lies on a volume of this container (or on the volume itself
// when it has none): /Users lives on the Data volume although its path starts at the System one.
bool scanLiesIn(const SpaceSummary& lastScan, const StorageVolume& volume, const StorageSnapshot& snapshot) {
    std::vector<std::string> mountPoints;
    for (const auto& candidate : snapshot.volumes) mountPoints.push_back(candidate.mountPoint);
    const auto holder = StorageAccounting::mountPointOf(lastScan.root, mountPoints);
    if (!holder) return false;
    for (const auto& candidate : snapshot.volumes) {
        if (candidate.mountPoint != *holder) continue;
        if (candidate.mountPoint == volume.mountPoint) return true;
        if (volume.containerID && candidate.containerID == volume.containerID) return true;
    }
    return false;
}

std::optional<std::vector<LocalSnapshot>> listSnapshots(const std::string& mainID, LocalSnapshotClient& client,
                                                        bool timeMachine, std::vector<std::string>& warnings) {
    std::optional<std::vector<LocalSnapshot>> snapshots;
    try {
        snapshots = SnapshotListParser::parseAPFS(client.listAPFS(mainID));
    } catch (const std::exception& error) {
        warnings.push_back(std::string(apfsSnapshotSource) + ": " + error.what());
    }
    if (!timeMachine) return snapshots;
    try {
        // Time Machine names the same snapshots; it adds only those the disk tool did not list.
        for (auto& named : SnapshotListParser::parseTimeMachine(client.listTimeMachine())) {
            if (!snapshots) break;
            const bool listed = std::any_of(snapshots->begin(), snapshots->end(),
                                            [&](const LocalSnapshot& known) { return known.name == named.name; });
            if (!listed) snapshots->push_back(std::move(named));
        }
    } catch (const std::exception& error) {
        warnings.push_back(std::string(timeMachineSource) + ": " + error.what());
    }
    return snapshots;
}

}  // namespace

AccountingPart partOfRoles(const std::vector<std::string>& roles) {
    for (const auto& [role, part] : roleParts)
        if (std::find(roles.begin(), roles.end(), role) != roles.end()) return part;
    return AccountingPart::otherVolume;
}

std::string mainVolumeID(const APFSContainer& container, const std::string& chosenID) {
    const auto chosen =
        std::find_if(container.volumes.begin(), container.volumes.end(),
                     [&](const APFSVolumeEntry& volume) { return isVolumeOrItsSnapshot(volume.id, chosenID); });
    if (chosen == container.volumes.end()) return chosenID;
    if (!hasRole(*chosen, "System")) return chosen->id;
    for (const auto& volume : container.volumes)
        if (hasRole(volume, "Data")) return volume.id;
    return chosen->id;
}

std::optional<std::int64_t> purgeableOf(const MountedVolumeRecord& record) {
    if (!record.importantAvailableBytes || *record.importantAvailableBytes < 0 || record.availableBytes < 0)
        return std::nullopt;
    // Both are non-negative, so the difference fits; more available than important-use is none.
    return std::max<std::int64_t>(checkedSubtract(*record.importantAvailableBytes, record.availableBytes), 0);
}

StorageAccount split(const APFSContainer& container, const std::string& mainID, const Listings& listings) {
    StorageAccount account;
    account.fileSystemType = "apfs";
    account.device = container.id;
    account.capacityBytes = std::max<std::int64_t>(container.capacityCeiling, 0);
    account.availableBytes = std::clamp<std::int64_t>(container.capacityFree, 0, account.capacityBytes);
    account.usedBytes = checkedSubtract(account.capacityBytes, account.availableBytes);
    account.containerVolumes = container.volumes;

    for (const auto& volume : container.volumes) {
        if (volume.id == mainID) continue;
        const auto bytes = volume.capacityInUse >= 0 ? std::optional<std::int64_t>(volume.capacityInUse) : std::nullopt;
        account.rows.push_back(
            {partOfRoles(volume.roles), bytes, apfsListSource, volume.name + " (" + volume.id + ")"});
    }
    if (listings.keepsSnapshots) addSnapshots(account, listings);
    if (listings.purgeableBytes)
        account.rows.push_back({AccountingPart::purgeable, listings.purgeableBytes, purgeableSource,
                                "caches and snapshots the system frees when space runs low"});
    addLastScan(account, listings.lastScan);

    if (auto rest = StorageAccounting::remainder(account.usedBytes, account.rows))
        account.rows.push_back(*rest);
    else
        account.warnings.push_back("the parts are too large to add up; no remainder is shown");
    return account;
}

StorageAccount read(const StorageVolume& volume, const StorageSnapshot& snapshot, AccountingSources& sources,
                    CommandRunning& runner, bool timeMachine, const std::optional<SpaceSummary>& lastScan) {
    std::vector<std::string> warnings;
    auto container = containerOf(volume, runner, warnings);
    const bool isAPFS = container.has_value();
    if (!container) {
        // Not APFS, or its container could not be read: the volume's own figures frame the split.
        container = APFSContainer{};
        container->id = volume.containerID.value_or(volume.bsdName.value_or(""));
        container->capacityCeiling = volume.totalBytes;
        container->capacityFree = volume.availableBytes;
    }
    const std::string chosenID = volume.bsdName.value_or("");
    const std::string mainID = mainVolumeID(*container, chosenID);

    Listings listings;
    if (isAPFS && !mainID.empty()) {
        LocalSnapshotClient client{runner};
        listings.snapshots = listSnapshots(mainID, client, timeMachine, warnings);
    }
    try {
        listings.purgeableBytes = sources.purgeableBytes(volume.mountPoint);
    } catch (const std::exception& error) {
        warnings.push_back(std::string(purgeableSource) + ": " + error.what());
    }
    if (lastScan && scanLiesIn(*lastScan, volume, snapshot)) listings.lastScan = lastScan;

    // Only an APFS container keeps snapshots; another file system gets no snapshot row at all.
    listings.keepsSnapshots = isAPFS;
    StorageAccount account = split(*container, mainID, listings);
    if (!isAPFS) account.fileSystemType = volume.fileSystemType.value_or("");
    account.mountPoint = volume.mountPoint;
    warnings.insert(warnings.end(), account.warnings.begin(), account.warnings.end());
    account.warnings = std::move(warnings);
    return account;
}

}  // namespace corvel::ContainerAccounting
