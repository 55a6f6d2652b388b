#include "machine/MachineInsights.h"

#include "insights/InsightEngine.h"
#include "machine/LastScanSummary.h"
#include "machine/MachineAccounting.h"

namespace corvel {

MachineInsights MachineInsights::of(Machine& machine, const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                    std::int64_t minimumBytes, const std::optional<DockerReading>& docker,
                                    const std::optional<std::vector<SnapshotShare>>& snapshotShares) {
    MachineInsights result;
    InsightEngine::Input input;
    input.snapshot = snapshot;
    input.report = report;
    input.platform = machine.platform();

    const auto reading = docker ? *docker : DockerReading::read(machine, snapshot);
    if (reading.inventory) input.docker = reading.inventory;

    auto summary = LastScanSummary::load(machine, result.notes);
    if (summary) {
        result.scanSummary = "Space suggestions from the scan of " + summary->root + " at " +
                             ISO8601::format(summary->scannedAt) + (summary->wasCancelled ? " (partial)." : ".");
        input.topConsumers = std::move(summary->topConsumers);
        input.credentialsInTrash = std::move(summary->credentialsInTrash);
    }

    input.snapshotShares = snapshotShares ? *snapshotShares : MachineAccounting::snapshotShares(machine, snapshot);
    result.insights = InsightEngine::insights(input, minimumBytes);
    return result;
}

}  // namespace corvel
