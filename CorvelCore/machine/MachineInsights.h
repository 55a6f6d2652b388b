// The insights of the machine being looked at: its snapshot and report, Docker when the program is
// there, the share local snapshots hold of its volumes, and the summary the last space scan saved
// in the data folder. Shared by `velmora insights`, `velmora status`, the report and the dashboard.
//
//   auto result = MachineInsights::of(machine, snapshot, report, InsightEngine::defaultMinimumBytes);
//   for (const auto& note : result.notes) { /* an input that could not be read */ }
#pragma once

#include "accounting/SnapshotShare.h"
#include "diagnostics/DiagnosticReport.h"
#include "insights/Insight.h"
#include "machine/DockerReading.h"
#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct MachineInsights {
    std::vector<Insight> insights;
    std::optional<std::string> scanSummary;  // what the space suggestions were based on, for people
    std::vector<std::string> notes;          // inputs that could not be read (an unreadable summary, …)

    // Reads Docker and the snapshot shares itself unless given (status may already have them).
    static MachineInsights of(Machine& machine, const StorageSnapshot& snapshot, const DiagnosticReport& report,
                              std::int64_t minimumBytes, const std::optional<DockerReading>& docker = std::nullopt,
                              const std::optional<std::vector<SnapshotShare>>& snapshotShares = std::nullopt);
};

}  // namespace corvel
