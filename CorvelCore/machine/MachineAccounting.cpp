#include "machine/MachineAccounting.h"

#include "accounting/AccountingSources.h"
#include "accounting/ContainerAccounting.h"
#include "accounting/LocalSnapshotClient.h"
#include "accounting/RecordedAccountingSources.h"
#include "accounting/StorageAccounting.h"
#include "accounting/VolumeAccounting.h"
#include "common/PathText.h"
#include "machine/LastScanSummary.h"

#include <set>

namespace corvel::MachineAccounting {
namespace {

std::unique_ptr<AccountingSources> sourcesOf(const Machine& machine) {
    if (const auto* recording = machine.recording())
        return std::make_unique<RecordedAccountingSources>(recording->document);
    return liveAccountingSources();
}

// Time Machine lists the snapshots of the volume group the system booted from, so it is asked
// only about the boot volume's container.
bool holdsBootVolume(const StorageSnapshot& snapshot, const StorageVolume& volume) {
    for (const auto& candidate : snapshot.volumes) {
        if (!candidate.isBootVolume) continue;
        if (candidate.id == volume.id) return true;
        if (volume.containerID && candidate.containerID == volume.containerID) return true;
    }
    return false;
}

}  // namespace

std::optional<StorageVolume> chooseVolume(const StorageSnapshot& snapshot, const std::optional<std::string>& typed) {
    if (!typed) {
        for (const auto& volume : snapshot.volumes)
            if (volume.isBootVolume) return volume;
        for (const auto& volume : snapshot.volumes)
            if (volume.mountPoint == "/") return volume;
        return std::nullopt;
    }
    for (const auto& volume : snapshot.volumes)
        if (volume.id == *typed || volume.name == *typed || volume.bsdName == *typed) return volume;
    // Only an absolute path picks by place: a mistyped name must not quietly become "/".
    if (!typed->starts_with('/')) return std::nullopt;
    std::vector<std::string> mountPoints;
    for (const auto& volume : snapshot.volumes) mountPoints.push_back(volume.mountPoint);
    const auto holder = StorageAccounting::mountPointOf(normalPath(*typed), mountPoints);
    for (const auto& volume : snapshot.volumes)
        if (holder && volume.mountPoint == *holder) return volume;
    return std::nullopt;
}

StorageAccount read(Machine& machine, const StorageSnapshot& snapshot, const StorageVolume& volume) {
    std::vector<std::string> notes;
    const auto lastScan = LastScanSummary::load(machine, notes);
    const auto sources = sourcesOf(machine);
    CommandRunning& runner = machine.runner(ToolTimeout::inventory);
    StorageAccount account;
    if (machine.platform() == Platform::macos) {
        const bool timeMachine =
            holdsBootVolume(snapshot, volume) && machine.toolInstalled(LocalSnapshotClient::tmutil);
        account = ContainerAccounting::read(volume, snapshot, *sources, runner, timeMachine, lastScan);
    } else {
        account = VolumeAccounting::read(volume.mountPoint, *sources, runner, lastScan);
    }
    account.warnings.insert(account.warnings.end(), notes.begin(), notes.end());
    return account;
}

std::vector<SnapshotShare> snapshotShares(Machine& machine, const StorageSnapshot& snapshot) {
    std::vector<SnapshotShare> shares;
    if (machine.platform() == Platform::macos) return shares;
    std::set<std::string> seen;
    for (const auto& volume : snapshot.volumes) {
        // One file system mounted twice (a subvolume at /home) is read once.
        const std::string key = volume.bsdName.value_or(volume.id);
        if (volume.fileSystemType != "btrfs" || !seen.insert(key).second) continue;
        if (auto share = SnapshotShare::of(read(machine, snapshot, volume))) shares.push_back(std::move(*share));
    }
    return shares;
}

}  // namespace corvel::MachineAccounting
