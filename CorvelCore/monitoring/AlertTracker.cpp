#include "monitoring/AlertTracker.h"

namespace corvel {

std::vector<Finding> AlertTracker::update(const std::vector<Finding>& findings, Severity minimumSeverity) {
    if (findings.empty()) {
        active.clear();
        return {};
    }
    std::map<std::string, Severity> next;
    std::vector<Finding> alerts;
    for (const auto& finding : findings) {
        if (finding.severity < minimumSeverity) continue;
        const std::string identity = finding.id();
        next[identity] = finding.severity;
        const auto previous = active.find(identity);
        if (previous == active.end() || previous->second < finding.severity) alerts.push_back(finding);
    }
    active = std::move(next);
    return alerts;
}

}  // namespace corvel
