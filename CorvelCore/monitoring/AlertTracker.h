// Decides which findings deserve a notification: one that is new, or that became more serious
// than when it last alerted. A finding that stays at its level, or improves, stays quiet; one
// that clears is forgotten and alerts again if it comes back. The map is what the agent saves
// between runs.
//
//   AlertTracker tracker;
//   tracker.restore(saved.activeAlerts);
//   for (const auto& finding : tracker.update(report.findings, Severity::warning)) notify(finding);
//   saved.activeAlerts = tracker.active;
#pragma once

#include "diagnostics/Finding.h"
#include "diagnostics/Severity.h"

#include <map>
#include <string>
#include <vector>

namespace corvel {

struct AlertTracker {
    std::map<std::string, Severity> active;  // Finding::id() -> the severity last alerted

    // The findings of at least `minimumSeverity` that are new or escalated, in the given order;
    // `active` becomes exactly the findings of this update at or above `minimumSeverity`.
    std::vector<Finding> update(const std::vector<Finding>& findings, Severity minimumSeverity);

    void restore(std::map<std::string, Severity> saved) { active = std::move(saved); }

    bool operator==(const AlertTracker&) const = default;
};

}  // namespace corvel
