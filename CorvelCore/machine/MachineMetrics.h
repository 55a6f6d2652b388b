// The figures of the machine being looked at, as metric families for Prometheus: volumes with
// their forecasts, drives with their health, the health dimensions and findings, the last space
// scan's developer data, Docker's reclaimable space and the agent's last cycle. `velmora metrics`
// prints them; the agent writes them into the node exporter's textfile folder every cycle.
//
//   auto input = MachineMetrics::gather(machine, refresh, settings.thresholds, notes);
//   input.agent = MachineMetrics::AgentFigures{now, 0.4, 900};
//   std::string text = MetricsExposition::render(MachineMetrics::families(input));
//
// Every family is a gauge in base units (bytes, seconds, ratios 0–1). Labels are of low
// cardinality only: mount point, volume name, file system, location; disk id, model, medium;
// health dimension; finding severity; space category. A figure that is not known is left out,
// never made up.
#pragma once

#include "diagnostics/DiagnosticThresholds.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"
#include "machine/RefreshCycle.h"
#include "monitoring/MetricsExposition.h"
#include "space/SpaceSummary.h"
#include "storage/StorageSnapshot.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel::MachineMetrics {

struct AgentFigures {
    TimePoint lastCycleAt{};
    double lastCycleSeconds = 0;
    std::int64_t intervalSeconds = 0;

    bool operator==(const AgentFigures&) const = default;
};

struct Input {
    StorageSnapshot snapshot;
    MachineDiagnosis diagnosis;
    std::map<std::string, double> forecasts;  // volume id -> days until full
    DiagnosticThresholds thresholds;
    std::optional<SpaceSummary> spaceSummary;
    std::optional<std::int64_t> dockerReclaimableBytes;  // none: no engine answered
    std::optional<AgentFigures> agent;
};

// Pure: the families of `input`, in a fixed order.
std::vector<MetricFamily> families(const Input& input);

// The refresh's figures plus the last space summary and Docker, read the way `velmora status`
// reads them. Inputs that could not be read are left out and named in `notes`.
Input gather(Machine& machine, const RefreshCycle::Result& refresh, const DiagnosticThresholds& thresholds,
             std::vector<std::string>& notes);

}  // namespace corvel::MachineMetrics
