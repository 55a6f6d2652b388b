#include "report/MachineReport.h"

#include "common/PathText.h"
#include "insights/InsightEngine.h"
#include "machine/DockerReading.h"
#include "machine/MachineInsights.h"
#include "machine/RefreshCycle.h"
#include "monitoring/HistoryStore.h"
#include "report/ReportTree.h"
#include "space/SpaceSummary.h"

namespace corvel::MachineReport {

HtmlReportInput gather(Machine& machine, const CorvelSettings& settings, std::optional<ReportSpace> space,
                       std::size_t maxNodes) {
    HtmlReportInput input;
    const RecordedMachine* recording = machine.recording();
    input.source = recording ? "Recorded machine: " + recording->name : std::string("This machine");
    input.generatedAt = machine.now();

    // The report reads the history the agent keeps, for the forecasts; it records nothing itself.
    HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
    RefreshCycle::Steps steps;
    steps.history = &history;
    auto refresh = RefreshCycle::run(machine, settings, steps);
    input.snapshot = std::move(refresh.snapshot);
    input.report = std::move(refresh.diagnosis.report);
    input.health = std::move(refresh.diagnosis.health);
    input.forecasts = std::move(refresh.forecasts);
    input.notes = std::move(refresh.warnings);

    const DockerReading docker = DockerReading::read(machine, input.snapshot);
    if (docker.executable) input.docker = docker.inventory;
    auto insights =
        MachineInsights::of(machine, input.snapshot, input.report, InsightEngine::defaultMinimumBytes, docker);
    input.insights = std::move(insights.insights);
    for (auto& note : insights.notes) input.notes.push_back(std::move(note));

    if (space) {
        space->tree = ReportTree::limit(std::move(space->tree), maxNodes);
        input.space = std::move(space);
    } else if (auto summary = SpaceSummary::load(machine.dataFolder())) {
        // Like the insights: while replaying, a scan outside the recorded home is somewhere else.
        if (!recording || isWithin(summary->root, recording->home)) {
            input.space = ReportSpace{ReportTree::limit(ReportTree::fromSummary(*summary), maxNodes), std::nullopt,
                                      summary->scannedAt};
        }
    }
    return input;
}

}  // namespace corvel::MachineReport
