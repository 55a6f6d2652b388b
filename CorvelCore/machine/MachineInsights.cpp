#include "machine/MachineInsights.h"

#include "common/PathText.h"
#include "insights/InsightEngine.h"
#include "space/SpaceSummary.h"

namespace corvel {

MachineInsights MachineInsights::of(Machine& machine, const StorageSnapshot& snapshot, const DiagnosticReport& report,
                                    std::int64_t minimumBytes, const std::optional<DockerReading>& docker) {
    MachineInsights result;
    InsightEngine::Input input;
    input.snapshot = snapshot;
    input.report = report;

    const auto reading = docker ? *docker : DockerReading::read(machine, snapshot);
    if (reading.inventory) input.docker = reading.inventory;

    std::string problem;
    auto summary = SpaceSummary::load(machine.dataFolder(), &problem);
    // The data folder is this machine's: while replaying another machine, a scan of a folder that
    // is not in the recorded home describes somewhere else and must not rank the recording's space.
    if (const RecordedMachine* recording = machine.recording();
        summary && recording && !isWithin(summary->root, recording->home)) {
        result.notes.push_back("Last scan summary ignored: it covers " + summary->root +
                               ", which is not on the recorded machine");
        summary.reset();
    }
    if (summary) {
        result.scanSummary = "Space suggestions from the scan of " + summary->root + " at " +
                             ISO8601::format(summary->scannedAt) + (summary->wasCancelled ? " (partial)." : ".");
        input.topConsumers = std::move(summary->topConsumers);
        input.credentialsInTrash = std::move(summary->credentialsInTrash);
    } else if (!problem.empty()) {
        result.notes.push_back("Last scan summary ignored: " + problem);
    }

    result.insights = InsightEngine::insights(input, minimumBytes);
    return result;
}

}  // namespace corvel
