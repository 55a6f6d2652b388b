#include "space/SpaceScanReport.h"

namespace corvel {

void to_json(Json& j, const CategoryTotal& total) {
    j = Json{{"category", total.category},
             {"allocatedBytes", total.allocatedBytes},
             {"exclusiveBytes", total.exclusiveBytes},
             {"fileCount", total.fileCount}};
}

void from_json(const Json& j, CategoryTotal& total) {
    total.category = required<SpaceCategory>(j, "category");
    total.allocatedBytes = required<std::int64_t>(j, "allocatedBytes");
    total.exclusiveBytes = required<std::int64_t>(j, "exclusiveBytes");
    total.fileCount = required<std::int64_t>(j, "fileCount");
}

void to_json(Json& j, const SpaceScanReport& report) {
    j = Json::object();
    j["root"] = report.root;
    j["wasCancelled"] = report.wasCancelled;
    j["logicalBytes"] = report.logicalBytes;
    j["allocatedBytes"] = report.allocatedBytes;
    j["exclusiveBytes"] = report.exclusiveBytes;
    j["fileCount"] = report.fileCount;
    j["directoryCount"] = report.directoryCount;
    j["deniedDirectories"] = report.deniedDirectories;
    j["unreadableFiles"] = report.unreadableFiles;
    j["skippedMountPoints"] = report.skippedMountPoints;
    j["hardLinkSavedBytes"] = report.hardLinkSavedBytes;
    j["cloneSharedBytes"] = report.cloneSharedBytes;
    j["largestFiles"] = report.largestFiles;
    j["duplicates"] = report.duplicates;
    j["sparseFilesLeftOut"] = report.sparseFilesLeftOut;
    j["categoryTotals"] = report.categoryTotals;
    j["credentialsInTrash"] = report.credentialsInTrash;
}

void from_json(const Json& j, SpaceScanReport& report) {
    report.root = required<std::string>(j, "root");
    report.wasCancelled = required<bool>(j, "wasCancelled");
    report.logicalBytes = required<std::int64_t>(j, "logicalBytes");
    report.allocatedBytes = required<std::int64_t>(j, "allocatedBytes");
    report.exclusiveBytes = required<std::int64_t>(j, "exclusiveBytes");
    report.fileCount = required<std::int64_t>(j, "fileCount");
    report.directoryCount = required<std::int64_t>(j, "directoryCount");
    report.deniedDirectories = required<std::int64_t>(j, "deniedDirectories");
    report.unreadableFiles = required<std::int64_t>(j, "unreadableFiles");
    report.skippedMountPoints = required<std::int64_t>(j, "skippedMountPoints");
    report.hardLinkSavedBytes = required<std::int64_t>(j, "hardLinkSavedBytes");
    report.cloneSharedBytes = required<std::int64_t>(j, "cloneSharedBytes");
    report.largestFiles = required<std::vector<SpaceNode>>(j, "largestFiles");
    report.duplicates = required<std::vector<DuplicateGroup>>(j, "duplicates");
    // Reports written before sparse files were left out have no such count.
    report.sparseFilesLeftOut = valueOr<std::int64_t>(j, "sparseFilesLeftOut", 0);
    report.categoryTotals = required<std::vector<CategoryTotal>>(j, "categoryTotals");
    report.credentialsInTrash = required<std::vector<std::string>>(j, "credentialsInTrash");
}

}  // namespace corvel
