// Everything a space scan found besides its tree: totals, the largest files, duplicate
// candidates, totals per category, what hard links and clones save, how many folders could not
// be read, and credential-like files lying in a trash.
//
// `hardLinkSavedBytes` is what a sum over file names would have counted a second time;
// `cloneSharedBytes` is allocated space that files share with clones (on file systems that can
// share blocks), which deleting one copy does not free.
#pragma once

#include "common/Json.h"
#include "space/DuplicateGroup.h"
#include "space/SpaceCategory.h"
#include "space/SpaceNode.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct CategoryTotal {
    SpaceCategory category = SpaceCategory::other;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t fileCount = 0;

    bool operator==(const CategoryTotal&) const = default;
};

void to_json(Json& j, const CategoryTotal& total);
void from_json(const Json& j, CategoryTotal& total);

struct SpaceScanReport {
    std::string root;
    bool wasCancelled = false;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t fileCount = 0;
    std::int64_t directoryCount = 0;
    std::int64_t deniedDirectories = 0;
    std::int64_t unreadableFiles = 0;
    std::int64_t skippedMountPoints = 0;
    std::int64_t hardLinkSavedBytes = 0;
    std::int64_t cloneSharedBytes = 0;
    std::vector<SpaceNode> largestFiles;        // largest first
    std::vector<DuplicateGroup> duplicates;     // largest reclaimable first
    std::int64_t sparseFilesLeftOut = 0;        // of the duplicate search: mostly holes, never read
    std::vector<CategoryTotal> categoryTotals;  // in category order, only categories with bytes
    std::vector<std::string> credentialsInTrash;

    bool operator==(const SpaceScanReport&) const = default;
};

void to_json(Json& j, const SpaceScanReport& report);
void from_json(const Json& j, SpaceScanReport& report);

}  // namespace corvel
