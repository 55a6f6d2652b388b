#include "machine/MachineAccounting.h"

#include "accounting/AccountingSources.h"
#include "accounting/RecordedAccountingSources.h"
#include "accounting/StorageAccounting.h"
#include "accounting/VolumeAccounting.h"
#include "common/PathText.h"
#include "space/SpaceSummary.h"

namespace corvel::MachineAccounting {

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

std::optional<std::string> unavailableReason(const Machine& machine) {
    if (machine.platform() == Platform::macos) return "accounting of APFS containers is not available yet";
    return std::nullopt;
}

StorageAccount read(Machine& machine, const StorageVolume& volume) {
    std::string problem;
    const auto lastScan = SpaceSummary::load(machine.dataFolder(), &problem);
    std::unique_ptr<AccountingSources> sources;
    if (const auto* recording = machine.recording())
        sources = std::make_unique<RecordedAccountingSources>(recording->document);
    else
        sources = liveAccountingSources();
    auto account =
        VolumeAccounting::read(volume.mountPoint, *sources, machine.runner(ToolTimeout::inventory), lastScan);
    if (!problem.empty()) account.warnings.push_back(problem);
    return account;
}

}  // namespace corvel::MachineAccounting
