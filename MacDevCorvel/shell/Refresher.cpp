#include "shell/Refresher.h"

#include "dashboard/DashboardModel.h"
#include "diagnostics/DiagnosticsModel.h"
#include "insights/InsightEngine.h"
#include "machine/MachineInsights.h"
#include "machine/RefreshCycle.h"
#include "monitoring/HistoryStore.h"
#include "shell/CoreSession.h"

namespace corvel::desktop {
namespace {

struct Outcome {
    RefreshCycle::Result refresh;
    MachineInsights insights;
    std::vector<std::string> warnings;
};

// The application reads the history the agent keeps, for the forecasts; recording it is the
// agent's job, so two processes never write the same file.
Outcome refreshMachine(Machine& machine) {
    Outcome outcome;
    const auto settings = machine.settings();
    if (settings.warning) outcome.warnings.push_back(*settings.warning);
    HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
    RefreshCycle::Steps steps;
    steps.history = &history;
    outcome.refresh = RefreshCycle::run(machine, settings.settings, steps);
    outcome.insights = MachineInsights::of(machine, outcome.refresh.snapshot, outcome.refresh.diagnosis.report,
                                           InsightEngine::defaultMinimumBytes);
    return outcome;
}

}  // namespace

Refresher::Refresher(CoreSession& session, DashboardModel& dashboard, DiagnosticsModel& diagnostics, QObject* parent)
    : QObject(parent), session_(session), dashboard_(dashboard), diagnostics_(diagnostics) {}

void Refresher::refresh() {
    if (running_) return;
    running_ = true;
    Q_EMIT started();
    session_.run(
        this, [&machine = session_.machine()] { return refreshMachine(machine); },
        [this](Outcome outcome) {
            auto& refresh = outcome.refresh;
            std::vector<std::string> warnings = refresh.snapshot.warnings;
            for (auto* more : {&refresh.warnings, &outcome.insights.notes, &outcome.warnings})
                warnings.insert(warnings.end(), more->begin(), more->end());
            diagnostics_.setDiagnosis(refresh.diagnosis);
            dashboard_.setValues({std::move(refresh.snapshot), std::move(refresh.diagnosis),
                                  std::move(refresh.forecasts), std::move(outcome.insights.insights),
                                  std::move(warnings)});
            running_ = false;
            Q_EMIT finished();
        });
}

}  // namespace corvel::desktop
