// The insights of the machine being looked at, shared by `velmora insights` and `velmora status`:
// the snapshot and report they already have, Docker when its program is there, and the summary
// the last `velmora scan` saved in the data folder.
#pragma once

#include "CliContext.h"
#include "diagnostics/DiagnosticReport.h"
#include "insights/Insight.h"
#include "insights/InsightEngine.h"
#include "storage/StorageSnapshot.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel::cli {

struct MachineInsights {
    std::vector<Insight> insights;
    std::optional<std::string> scanSummary;  // what the space suggestions were based on, for people
    std::vector<std::string> notes;          // inputs that could not be read (an unreadable summary, …)
};

MachineInsights machineInsights(CliContext& context, const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                std::int64_t minimumBytes);

// The few most important insights under a heading, as `status` shows them.
void printTopInsights(CliContext& context, const MachineInsights& insights);

// At most `limit` insights, most important first, each with its detail, amount, risk and action.
void printInsights(CliContext& context, const std::vector<Insight>& insights, std::size_t limit,
                   const std::string& indent);

}  // namespace corvel::cli
