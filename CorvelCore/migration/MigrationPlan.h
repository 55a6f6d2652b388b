// A plan to move a workspace to another volume or folder, for a person to review and carry out:
// what stops it (blockers), what it would break, the steps, the commands and the way back.
// Velmora never carries any of it out. MigrationFacts are what the planner is given about the
// machine; the plan is derived from them alone.
//
//   MigrationPlan plan = MigrationPlanner::plan(facts);
//   if (plan.isReady) show(plan.commands);   // else plan.blockers say why not
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"
#include "common/Platform.h"
#include "migration/AbsolutePathScanner.h"
#include "migration/BreakingPath.h"
#include "storage/StorageVolume.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

enum class BlockerKind {
    overlappingPaths,
    destinationExists,
    targetReadOnly,
    targetTooSmall,
    caseInsensitiveTarget,
    unsuitableFileSystem,
    sourceInUse,
    nothingToMove,
    engineRunning,
    targetMissing,
    targetNotFolder,
    sameVolume,
};

template <>
struct EnumTable<BlockerKind> {
    static constexpr std::array<EnumEntry<BlockerKind>, 12> entries{{
        {BlockerKind::overlappingPaths, "overlappingPaths", "Overlapping paths", Tone::bad},
        {BlockerKind::destinationExists, "destinationExists", "Destination exists", Tone::bad},
        {BlockerKind::targetReadOnly, "targetReadOnly", "Target read-only", Tone::bad},
        {BlockerKind::targetTooSmall, "targetTooSmall", "Target too small", Tone::bad},
        {BlockerKind::caseInsensitiveTarget, "caseInsensitiveTarget", "Case-insensitive target", Tone::bad},
        {BlockerKind::unsuitableFileSystem, "unsuitableFileSystem", "Unsuitable file system", Tone::bad},
        {BlockerKind::sourceInUse, "sourceInUse", "Source in use", Tone::bad},
        {BlockerKind::nothingToMove, "nothingToMove", "Nothing to move", Tone::bad},
        {BlockerKind::engineRunning, "engineRunning", "Engine running", Tone::bad},
        {BlockerKind::targetMissing, "targetMissing", "Target missing", Tone::bad},
        {BlockerKind::targetNotFolder, "targetNotFolder", "Target not a folder", Tone::bad},
        {BlockerKind::sameVolume, "sameVolume", "Same volume", Tone::bad},
    }};
};
CORVEL_ENUM_JSON(BlockerKind)

struct MigrationBlocker {
    BlockerKind kind = BlockerKind::overlappingPaths;
    std::string message;

    bool operator==(const MigrationBlocker&) const = default;
};
CORVEL_JSON_RECORD(MigrationBlocker, kind, message)

struct MigrationFacts {
    std::string source;  // normal absolute path of the workspace
    std::string target;  // the folder it would go into
    Platform platform = Platform::linux;
    std::int64_t allocatedBytes = 0;  // what the workspace occupies now
    std::optional<StorageVolume> sourceVolume;
    std::optional<StorageVolume> targetVolume;
    bool destinationExists = false;  // target/NAME is already there
    AbsolutePathScan scan;
    std::vector<std::string> openBy;           // "COMMAND (pid N)" of processes using the workspace
    std::optional<std::string> openByProblem;  // why the processes could not be listed
    std::vector<std::string> projectRoots;     // the setting, as it stands

    bool operator==(const MigrationFacts&) const = default;
};
CORVEL_JSON_RECORD(MigrationFacts, source, target, platform, allocatedBytes, sourceVolume, targetVolume,
                   destinationExists, scan, openBy, openByProblem, projectRoots)

struct MigrationPlan {
    std::string source;
    std::string destination;  // where the workspace would live: target/NAME
    std::int64_t allocatedBytes = 0;
    std::optional<std::string> targetVolume;  // its name
    std::optional<std::int64_t> targetAvailableBytes;
    std::vector<MigrationBlocker> blockers;
    std::vector<BreakingPath> breakingPaths;
    std::vector<std::string> steps;
    std::vector<std::string> commands;  // for review; velmora runs none of them
    std::vector<std::string> rollback;
    std::vector<std::string> notes;  // what the scan could not read, binary files skipped
    bool isReady = false;            // no blockers

    bool operator==(const MigrationPlan&) const = default;
};
CORVEL_JSON_RECORD(MigrationPlan, source, destination, allocatedBytes, targetVolume, targetAvailableBytes, blockers,
                   breakingPaths, steps, commands, rollback, notes, isReady)

}  // namespace corvel
