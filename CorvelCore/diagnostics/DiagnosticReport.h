// The result of one diagnostic run: when the snapshot was taken and the findings, always held in
// report order (most severe first, then by subject name, then by rule id). Every way of building
// a report — the engine, a decoder, a test — goes through the sorting constructor, so readers can
// rely on that order.
//
//   DiagnosticReport report(snapshot.capturedAt, std::move(findings));
//   report.overallSeverity();  report.healthScore();  report.findingsFor(FindingSubject::disk("disk4"));
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "diagnostics/Finding.h"
#include "diagnostics/FindingSubject.h"
#include "diagnostics/Severity.h"

#include <cstddef>
#include <vector>

namespace corvel {

// Stable sort into report order: severity descending, then subjectName ascending (byte order),
// then ruleID ascending; findings equal in all three keep their collection order.
void sortFindings(std::vector<Finding>& findings);

struct DiagnosticReport {
    TimePoint generatedAt;
    std::vector<Finding> findings;

    // The empty report: the distant-past date and no findings.
    DiagnosticReport();
    DiagnosticReport(TimePoint generatedAtTime, std::vector<Finding> collectedFindings);

    static const DiagnosticReport& empty();

    // The highest severity among warning and critical findings; ok when there is none. Info
    // findings never raise it: they are notes, not problems.
    Severity overallSeverity() const;
    // 100, less 10 per warning and 30 per critical, never below 0.
    int healthScore() const;
    std::size_t count(Severity severity) const;
    std::size_t actionableCount() const;
    std::vector<Finding> findingsFor(const FindingSubject& subject) const;
    Severity severityFor(const FindingSubject& subject) const;

    bool operator==(const DiagnosticReport&) const = default;
};

void to_json(Json& j, const DiagnosticReport& report);
void from_json(const Json& j, DiagnosticReport& report);

}  // namespace corvel
