// One refresh of the machine being looked at, the same for every front end: discovery builds the
// snapshot, the diagnostic engine judges it under the settings, the health dimensions follow;
// then, for the callers that keep them, the volumes mounted and unmounted since the previous
// snapshot become monitor events, the alert tracker picks the findings worth a notification, the
// volume samples go into the history, and each volume's forecast is read from that history.
// The command line's `status`, the background agent and the desktop application all call this,
// so they can never disagree about the same machine.
//
//   AlertTracker alerts;  alerts.restore(saved.activeAlerts);
//   HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
//   RefreshCycle::Steps steps{.previous = &lastSnapshot, .alerts = &alerts, .history = &history,
//                             .recordHistory = true};
//   RefreshCycle::Result refresh = RefreshCycle::run(machine, settings, steps);
//   for (const auto& event : refresh.events) notify(event.title, event.message);
//   for (const auto& warning : refresh.warnings) log(warning);
#pragma once

#include "diagnostics/CorvelSettings.h"
#include "diagnostics/Finding.h"
#include "diagnostics/Severity.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"
#include "monitoring/AlertTracker.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MonitorEvent.h"
#include "storage/StorageSnapshot.h"

#include <map>
#include <string>
#include <vector>

namespace corvel::RefreshCycle {

// Findings below this never notify: info findings are notes, not problems.
inline constexpr Severity alertMinimumSeverity = Severity::warning;

// What the caller keeps between cycles; a step whose input is missing is skipped.
struct Steps {
    const StorageSnapshot* previous = nullptr;  // mount changes against it; none: no mount events
    AlertTracker* alerts = nullptr;             // updated with the findings; none: no alerts
    HistoryStore* history = nullptr;            // forecasts are read from it; none: no forecasts
    bool recordHistory = false;                 // also add this snapshot's volumes to `history`
    double forecastMinimumSpan = CapacityForecast::standardMinimumSpan;
};

struct Result {
    StorageSnapshot snapshot;
    MachineDiagnosis diagnosis;
    std::vector<MonitorEvent> events;        // mount changes, then alerts, all dated at the snapshot
    std::vector<Finding> alerts;             // the findings that are new or more severe
    std::map<std::string, double> forecasts; // volume id -> days until full, for volumes that have one
    std::vector<std::string> warnings;       // problems of the cycle itself, beyond the snapshot's own
};

// Never throws: discovery turns tool failures into snapshot warnings, and a history that cannot
// be saved is the warning "Could not save history: " + the reason.
Result run(Machine& machine, const CorvelSettings& settings, const Steps& steps = {});

}  // namespace corvel::RefreshCycle
