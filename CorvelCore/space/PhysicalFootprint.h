// A clone-aware measurement of one folder tree: logical bytes (file lengths), allocated bytes
// (what each file holds, shared blocks counted per file) and unique physical bytes (every
// device block counted once), overall and for named areas below the root.
//
//   ScanProgress progress;
//   auto result = PhysicalFootprint::measure("/var/lib/docker", {"/var/lib/docker/volumes"},
//                                            progress, [] { return false; });
//   auto sharedByClones = result.total.allocatedBytes - result.total.uniquePhysicalBytes;
//
// Hard-linked inodes count once, symbolic links are never followed, and the walk (FolderWalk)
// never leaves the root's mount. Unreadable files and folders are counted per reason, never
// fatal; a root that cannot be read at all is said so in `rootError`.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "common/Json.h"
#include "space/FileMetadataReading.h"
#include "space/ScanProgress.h"
#include "space/WalkFailures.h"

namespace corvel::PhysicalFootprint {

struct Totals {
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t uniquePhysicalBytes = 0;
    std::int64_t fileCount = 0;
    // Files whose size facts or extents could not be read.
    std::int64_t unreadableFiles = 0;

    bool operator==(const Totals&) const = default;
};

void to_json(Json& json, const Totals& totals);
void from_json(const Json& json, Totals& totals);

struct Result {
    Totals total;
    // Every requested area (standardised path), zero when nothing of it was reached.
    std::map<std::string, Totals> areas;
    std::int64_t deniedDirectories = 0;
    bool wasCancelled = false;
    // What could not be read, per reason, with the first unreadable folders by path.
    WalkFailures failures;
    // Why the root itself could not be read: the totals then say nothing about it.
    std::optional<std::string> rootError;

    bool operator==(const Result&) const = default;
};

void to_json(Json& json, const Result& result);
void from_json(const Json& json, Result& result);

using CancellationCheck = std::function<bool()>;

// `areas` are absolute folder paths accounted separately; a file belongs to the innermost area
// that holds it. Files, bytes and folders are published to `progress` as the walk goes;
// `isCancelled` (may be empty) is polled before each folder and every thousand files and, when it
// answers true, the partial totals come back with wasCancelled set.
Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, ScanProgress& progress,
               const CancellationCheck& isCancelled, FileMetadataReading& files);

// The same over the live file system.
Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, ScanProgress& progress,
               const CancellationCheck& isCancelled);

// Absolute, without "." and ".." components or a trailing "/" (except for "/" itself):
// the form in which roots and areas are compared.
std::string standardizedPath(const std::filesystem::path& path);

// `directory` + "/" + `name`, without doubling the "/" of the root folder.
std::string childPath(const std::string& directory, const std::string& name);

}  // namespace corvel::PhysicalFootprint
