// Turns MigrationFacts into a MigrationPlan for review. Pure: it reads no file and runs nothing,
// so every blocker and every line of the plan follows from the facts the caller gathered.
//
//   MigrationPlan plan = MigrationPlanner::plan(facts);
//   MigrationPlanner::overlapProblem("/home/me/ws", "/home/me/ws/sub");  // "the target … lies inside …"
//
// Blockers, in this order: overlapping source and target; a destination that already exists; a
// read-only target; a target with less room than the workspace's allocated bytes (clones and
// shared blocks become full copies on another volume); a case-insensitive target for a workspace
// whose names differ only in case; a FAT or exFAT target for a git repository (no symbolic links,
// no permission bits); processes using the workspace.
#pragma once

#include "migration/MigrationPlan.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::MigrationPlanner {

// Why `source` cannot move into `target` by their paths alone: the same folder, the target
// inside the source, or the source already inside the target. Both are normal absolute paths.
std::optional<std::string> overlapProblem(const std::string& source, const std::string& target);

// Where the workspace would live: `target` followed by the workspace's own name.
std::string destinationFor(const std::string& source, const std::string& target);

// The mounted volume holding `path`: the one with the longest mount point at or above it.
std::optional<StorageVolume> volumeContaining(const std::vector<StorageVolume>& volumes, const std::string& path);

// Whether names that differ only in case would collide on `volume`.
bool isCaseInsensitive(const StorageVolume& volume);

MigrationPlan plan(const MigrationFacts& facts);

}  // namespace corvel::MigrationPlanner
