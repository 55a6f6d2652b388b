// Turns a selection into a CleanupSimulation: a folder selected together with something inside it
// counts once, then each remaining item meets the safety rules in a fixed order and the first that
// fires keeps it out, with a sentence a person can act on. Pure: it reads no file and asks no
// process; the caller gathers what is open, what runs and which files look like credentials.
//
//   CleanupSimulation simulation = CleanupPlanner::simulate(
//       candidates, "Macintosh HD", volume.availableBytes,
//       inUsePaths,              // paths open by running processes
//       {"Slack", "Xcode"},      // running applications
//       credentialPaths,         // credential-like files the scan found
//       machine.now());
//
// The rules, first match wins:
//   1. red or gray risk: never offered for cleanup;
//   2. credential-like files inside: recover them first;
//   3. a path inside is open by a running process;
//   4. the owning application is running (names compared ignoring case);
//   5. project and database data, whatever its size.
#pragma once

#include "cleanup/CleanupCandidate.h"
#include "cleanup/CleanupSimulation.h"
#include "common/ISO8601.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace corvel::CleanupPlanner {

inline constexpr const char* simulationOnlyCheck = "Simulation only: no file was modified.";
inline constexpr const char* exclusiveBytesCheck =
    "Estimates use exclusive (unshared) bytes; APFS clones free nothing until every copy is gone.";
inline constexpr const char* yellowReviewCheck =
    "YELLOW items need manual review: they may be rebuilt slowly or needed by projects.";

CleanupSimulation simulate(const std::vector<CleanupCandidate>& selection, const std::string& volumeName,
                           std::int64_t volumeFree, const std::vector<std::string>& inUsePaths,
                           const std::set<std::string>& runningApplications,
                           const std::vector<std::string>& credentialPaths, TimePoint now);

// Why the rules keep `candidate` out of a cleanup; absent when it is eligible.
std::optional<std::string> exclusionReason(const CleanupCandidate& candidate,
                                           const std::vector<std::string>& inUsePaths,
                                           const std::set<std::string>& runningApplications,
                                           const std::vector<std::string>& credentialPaths);

// The selection without items that lie inside (or repeat) another selected item, in selection
// order. A path lies inside another when it starts with that path followed by "/".
std::vector<CleanupCandidate> withoutNestedItems(const std::vector<CleanupCandidate>& selection);

}  // namespace corvel::CleanupPlanner
