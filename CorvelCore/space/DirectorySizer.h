// A quick allocated-size survey of one location: the sum of the allocated sizes of the regular
// files below it (blocks shared by clones counted for every clone; PhysicalFootprint is the
// clone-aware measurement). Used for the developer footprint, where speed matters more than
// exactness about clones.
//
//   if (auto size = DirectorySizer::measure(home / ".npm", now, [] { return false; })) { ... }
//
// Hidden files are counted; symbolic links inside the tree are not followed (a location that is
// itself a link is measured at its target); unreadable subfolders are skipped, never fatal; the
// walk stays on the location's device.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "common/ISO8601.h"
#include "space/DirectoryMeasurement.h"
#include "space/FileMetadataReading.h"

namespace corvel::DirectorySizer {

// How many files are counted between two polls of isCancelled (it is also polled per folder).
inline constexpr std::int64_t cancellationPollInterval = 1'000;

// Absent when nothing exists at `location`.
std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            const std::function<bool()>& isCancelled, FileMetadataReading& files);

// The same over the live file system.
std::optional<DirectoryMeasurement> measure(const std::filesystem::path& location, TimePoint now,
                                            const std::function<bool()>& isCancelled);

}  // namespace corvel::DirectorySizer
