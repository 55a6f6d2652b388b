#include "hardware/DiskBreakdown.h"

#include "common/CheckedArithmetic.h"
#include "common/EnumTable.h"
#include "common/PathText.h"

#include <algorithm>
#include <map>

namespace corvel {

std::optional<DiskBreakdown> DiskBreakdown::of(const SpaceSummary& summary, const StorageSnapshot& snapshot) {
    // The volume holding the scan's root: the one with the longest mount point above it.
    const StorageVolume* holder = nullptr;
    for (const auto& volume : snapshot.volumes) {
        if (volume.mountPoint.empty() || !isWithin(summary.root, volume.mountPoint)) continue;
        if (!holder || volume.mountPoint.size() > holder->mountPoint.size()) holder = &volume;
    }
    if (!holder || !holder->physicalDiskID) return std::nullopt;
    const auto disk = snapshot.disk(*holder->physicalDiskID);
    if (!disk || !disk->isInternal) return std::nullopt;

    DiskBreakdown breakdown;
    breakdown.diskID = disk->id;
    breakdown.diskName = disk->displayName();
    breakdown.scanRoot = summary.root;
    breakdown.scannedAt = summary.scannedAt;
    breakdown.isPartial = summary.wasCancelled;
    breakdown.scannedBytes = std::max<std::int64_t>(summary.allocatedBytes, 0);

    std::map<SpaceCategory, std::int64_t> totals;
    std::int64_t attributed = 0;
    for (const auto& node : summary.topConsumers) {
        if (node.allocatedBytes <= 0) continue;
        totals[node.classification.category] = checkedAdd(totals[node.classification.category], node.allocatedBytes);
        attributed = checkedAdd(attributed, node.allocatedBytes);
    }
    for (const auto category : allCases<SpaceCategory>())
        if (const auto found = totals.find(category); found != totals.end())
            breakdown.categories.push_back({category, found->second});
    std::stable_sort(breakdown.categories.begin(), breakdown.categories.end(),
                     [](const CategoryBytes& a, const CategoryBytes& b) { return a.bytes > b.bytes; });
    breakdown.unattributedBytes = std::max<std::int64_t>(
        checkedSubtract(breakdown.scannedBytes, std::min(attributed, breakdown.scannedBytes)), 0);
    return breakdown;
}

}  // namespace corvel
