#include "diagnostics/DiagnosticReport.h"

#include "storage/StorageSnapshot.h"

#include <algorithm>
#include <utility>

namespace corvel {

namespace {

Severity highestActionable(const std::vector<Finding>& findings, const FindingSubject* onlySubject) {
    auto highest = Severity::ok;
    for (const auto& finding : findings) {
        if (onlySubject && !(finding.subject == *onlySubject)) continue;
        if (isActionable(finding.severity) && finding.severity > highest) highest = finding.severity;
    }
    return highest;
}

}  // namespace

void sortFindings(std::vector<Finding>& findings) {
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
        if (a.severity != b.severity) return a.severity > b.severity;
        if (a.subjectName != b.subjectName) return a.subjectName < b.subjectName;
        return a.ruleID < b.ruleID;
    });
}

DiagnosticReport::DiagnosticReport() : generatedAt(distantPast()) {}

DiagnosticReport::DiagnosticReport(TimePoint generatedAtTime, std::vector<Finding> collectedFindings)
    : generatedAt(generatedAtTime), findings(std::move(collectedFindings)) {
    sortFindings(findings);
}

const DiagnosticReport& DiagnosticReport::empty() {
    static const DiagnosticReport report;
    return report;
}

Severity DiagnosticReport::overallSeverity() const {
    return highestActionable(findings, nullptr);
}

int DiagnosticReport::healthScore() const {
    int score = 100;
    for (const auto& finding : findings) {
        if (finding.severity == Severity::warning) score -= 10;
        if (finding.severity == Severity::critical) score -= 30;
        // Stop early: a long report must not run an int below its floor for no reason.
        if (score <= 0) return 0;
    }
    return score;
}

std::size_t DiagnosticReport::count(Severity severity) const {
    return static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(),
                                                  [severity](const Finding& f) { return f.severity == severity; }));
}

std::size_t DiagnosticReport::actionableCount() const {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(), [](const Finding& f) { return isActionable(f.severity); }));
}

std::vector<Finding> DiagnosticReport::findingsFor(const FindingSubject& subject) const {
    std::vector<Finding> result;
    for (const auto& finding : findings)
        if (finding.subject == subject) result.push_back(finding);
    return result;
}

Severity DiagnosticReport::severityFor(const FindingSubject& subject) const {
    return highestActionable(findings, &subject);
}

void to_json(Json& j, const DiagnosticReport& report) {
    j = Json::object();
    j["generatedAt"] = report.generatedAt;
    j["findings"] = report.findings;
    // Derived, written so that scripts need not recompute them; never read back.
    j["overallSeverity"] = report.overallSeverity();
    j["healthScore"] = report.healthScore();
}

void from_json(const Json& j, DiagnosticReport& report) {
    report = DiagnosticReport(required<TimePoint>(j, "generatedAt"), required<std::vector<Finding>>(j, "findings"));
}

}  // namespace corvel
