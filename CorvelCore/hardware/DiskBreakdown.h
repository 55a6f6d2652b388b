// How the internal disk's scanned space splits over the catalogue's categories, from the summary
// the last space scan left ("space-summary.json"). Only a scan of a folder on an internal disk
// counts; its largest consumers are added up per category (they never overlap), and what the
// summary does not attribute to one of them is kept apart.
//
//   if (auto breakdown = DiskBreakdown::of(summary, snapshot)) show(breakdown->categories);
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "space/SpaceCategory.h"
#include "space/SpaceSummary.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct CategoryBytes {
    SpaceCategory category = SpaceCategory::other;
    std::int64_t bytes = 0;

    bool operator==(const CategoryBytes&) const = default;
};

struct DiskBreakdown {
    std::string diskID;
    std::string diskName;
    std::string scanRoot;
    TimePoint scannedAt{};
    bool isPartial = false;                 // the scan was cancelled
    std::int64_t scannedBytes = 0;          // allocated bytes the scan saw under its root
    std::vector<CategoryBytes> categories;  // largest first; categories without bytes are left out
    std::int64_t unattributedBytes = 0;     // scanned, but below the summary's largest consumers

    // Absent when the scan's root does not lie on an internal disk of the snapshot.
    static std::optional<DiskBreakdown> of(const SpaceSummary& summary, const StorageSnapshot& snapshot);

    bool operator==(const DiskBreakdown&) const = default;
};

CORVEL_JSON_RECORD(CategoryBytes, category, bytes)
CORVEL_JSON_RECORD(DiskBreakdown, diskID, diskName, scanRoot, scannedAt, isPartial, scannedBytes, categories,
                   unattributedBytes)

}  // namespace corvel
