// A quick allocated-size survey of one location: the sum of the allocated sizes of the regular
// files below it (blocks shared by clones counted for every clone; PhysicalFootprint is the
// clone-aware measurement). Used for the developer footprint, where speed matters more than
// exactness about clones.
//
//   ScanProgress progress;
//   if (auto size = DirectorySizer::measure(home / ".npm", now, progress, [] { return false; })) { ... }
//
// Hidden files are counted; symbolic links inside the tree are not followed (a location that is
// itself a link is measured at its target); unreadable subfolders are counted per reason and the
// walk goes on; the walk (FolderWalk) stays on the location's mount.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "common/ISO8601.h"
#include "space/DirectoryMeasurement.h"
#include "space/FileMetadataReading.h"
#include "space/FolderWalk.h"
#include "space/ScanProgress.h"

namespace corvel::DirectorySizer {

// How many files are counted between two polls of isCancelled (it is also polled per folder).
inline constexpr std::int64_t cancellationPollInterval = FolderWalk::cancellationPollInterval;

// Absent when nothing exists at `location`. Progress is published to `progress`, which is left
// unfinished: a survey measures several locations into one.
std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            ScanProgress& progress, const std::function<bool()>& isCancelled,
                                            FileMetadataReading& files);

// The same over the live file system.
std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            ScanProgress& progress, const std::function<bool()>& isCancelled);

}  // namespace corvel::DirectorySizer
