// A clone-aware measurement of one folder tree: logical bytes (file lengths), allocated bytes
// (what each file holds, shared blocks counted per file) and unique physical bytes (every
// device block counted once), overall and for named areas below the root.
//
//   auto result = PhysicalFootprint::measure("/var/lib/docker", {"/var/lib/docker/volumes"},
//                                            nullptr, [] { return false; });
//   auto sharedByClones = result.total.allocatedBytes - result.total.uniquePhysicalBytes;
//
// Hard-linked inodes count once, symbolic links are never followed, and the walk never leaves
// the root's device. Unreadable files and folders are counted, never fatal.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "common/Json.h"
#include "space/FileMetadataReading.h"

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

    bool operator==(const Result&) const = default;
};

void to_json(Json& json, const Result& result);
void from_json(const Json& json, Result& result);

// Called with the running file count every `progressInterval` files.
using Progress = std::function<void(std::int64_t fileCount)>;
using CancellationCheck = std::function<bool()>;

inline constexpr std::int64_t progressInterval = 10'000;

// `areas` are absolute folder paths accounted separately; a file belongs to the innermost area
// that holds it. `progress` may be empty; `isCancelled` is polled before each folder and, when
// it answers true, the partial totals come back with wasCancelled set.
Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, const Progress& progress,
               const CancellationCheck& isCancelled, FileMetadataReading& files);

// The same over the live file system.
Result measure(const std::filesystem::path& root, const std::set<std::string>& areas, const Progress& progress,
               const CancellationCheck& isCancelled);

// Absolute, without "." and ".." components or a trailing "/" (except for "/" itself):
// the form in which roots and areas are compared.
std::string standardizedPath(const std::filesystem::path& path);

// `directory` + "/" + `name`, without doubling the "/" of the root folder.
std::string childPath(const std::string& directory, const std::string& name);

}  // namespace corvel::PhysicalFootprint
