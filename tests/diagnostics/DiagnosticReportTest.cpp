#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticReport.h"
#include "storage/StorageSnapshot.h"

#include <gtest/gtest.h>

namespace corvel {
namespace {

using testing::finding;

std::vector<std::string> ids(const std::vector<Finding>& findings) {
    std::vector<std::string> result;
    for (const auto& f : findings) result.push_back(f.ruleID + "@" + f.subjectName);
    return result;
}

TEST(DiagnosticReportOrdering, SeverityFirstThenSubjectNameThenRuleID) {
    const DiagnosticReport report(TimePoint{}, {
                                                   finding("disk.nvme.temperature", Severity::warning, "Alpha"),
                                                   finding("volume.freeSpace", Severity::critical, "Zeta"),
                                                   finding("disk.nvme.mediaErrors", Severity::warning, "Alpha"),
                                                   finding("volume.ownership", Severity::info, "Alpha"),
                                                   finding("volume.readOnly", Severity::warning, "Beta"),
                                               });
    EXPECT_EQ(ids(report.findings), (std::vector<std::string>{"volume.freeSpace@Zeta", "disk.nvme.mediaErrors@Alpha",
                                                              "disk.nvme.temperature@Alpha", "volume.readOnly@Beta",
                                                              "volume.ownership@Alpha"}));
}

TEST(DiagnosticReportOrdering, SubjectNamesCompareCaseSensitively) {
    const DiagnosticReport report(TimePoint{},
                                  {finding("r", Severity::warning, "alpha"), finding("r", Severity::warning, "Zeta"),
                                   finding("r", Severity::warning, "Beta")});
    // Byte order puts every upper-case letter before any lower-case one.
    EXPECT_EQ(ids(report.findings), (std::vector<std::string>{"r@Beta", "r@Zeta", "r@alpha"}));
}

TEST(DiagnosticReportOrdering, TiesKeepCollectionOrder) {
    auto first = finding("disk.smart", Severity::warning, "Same", FindingSubject::disk("disk1"));
    auto second = finding("disk.smart", Severity::warning, "Same", FindingSubject::disk("disk2"));
    auto third = finding("disk.smart", Severity::warning, "Same", FindingSubject::volume("v"));
    const DiagnosticReport report(TimePoint{}, {first, second, third});
    EXPECT_EQ(report.findings, (std::vector{first, second, third}));
}

TEST(DiagnosticReportOrdering, DecodedReportIsSortedToo) {
    const Json j = {{"generatedAt", "2026-11-02T09:30:00Z"},
                    {"findings", {finding("a", Severity::info, "A"), finding("b", Severity::critical, "B")}}};
    const auto report = j.get<DiagnosticReport>();
    ASSERT_EQ(report.findings.size(), 2u);
    EXPECT_EQ(report.findings.front().ruleID, "b");
    EXPECT_EQ(report.generatedAt, *ISO8601::parse("2026-11-02T09:30:00Z"));
    EXPECT_EQ(Json(report).get<DiagnosticReport>(), report);
}

TEST(DiagnosticReport, EmptyReportIsHealthy) {
    const auto& empty = DiagnosticReport::empty();
    EXPECT_TRUE(empty.findings.empty());
    EXPECT_EQ(empty.generatedAt, distantPast());
    EXPECT_EQ(empty.overallSeverity(), Severity::ok);
    EXPECT_EQ(empty.healthScore(), 100);
    EXPECT_EQ(empty.actionableCount(), 0u);
}

TEST(DiagnosticReport, InfoFindingsNeverRaiseOverallSeverityOrCostScore) {
    const DiagnosticReport report(TimePoint{}, {finding("volume.ownership", Severity::info, "A"),
                                                finding("volume.encryption", Severity::info, "A")});
    EXPECT_EQ(report.overallSeverity(), Severity::ok);
    EXPECT_EQ(report.actionableCount(), 0u);
    EXPECT_EQ(report.healthScore(), 100);
    EXPECT_EQ(report.count(Severity::info), 2u);
}

TEST(DiagnosticReport, HealthScoreCostsTenPerWarningThirtyPerCriticalFlooredAtZero) {
    std::vector<Finding> findings{finding("a", Severity::warning, "A"), finding("b", Severity::critical, "A"),
                                  finding("c", Severity::info, "A")};
    EXPECT_EQ(DiagnosticReport(TimePoint{}, findings).healthScore(), 60);

    findings.clear();
    for (int i = 0; i < 5; ++i) findings.push_back(finding("w" + std::to_string(i), Severity::warning, "A"));
    for (int i = 0; i < 3; ++i) findings.push_back(finding("c" + std::to_string(i), Severity::critical, "A"));
    const DiagnosticReport many(TimePoint{}, findings);
    EXPECT_EQ(many.healthScore(), 0);
    EXPECT_EQ(many.count(Severity::warning), 5u);
    EXPECT_EQ(many.count(Severity::critical), 3u);
    EXPECT_EQ(many.actionableCount(), 8u);
    EXPECT_EQ(many.overallSeverity(), Severity::critical);
}

TEST(DiagnosticReport, PerSubjectQueriesMatchKindAndId) {
    const auto disk = FindingSubject::disk("X");
    const auto volume = FindingSubject::volume("X");
    const DiagnosticReport report(TimePoint{},
                                  {finding("a", Severity::info, "N", disk), finding("b", Severity::warning, "N", disk),
                                   finding("c", Severity::critical, "N", volume)});
    // Report order: the warning before the info.
    EXPECT_EQ(ids(report.findingsFor(disk)), (std::vector<std::string>{"b@N", "a@N"}));
    EXPECT_EQ(report.severityFor(disk), Severity::warning);
    EXPECT_EQ(report.severityFor(volume), Severity::critical);
    EXPECT_EQ(report.severityFor(FindingSubject::disk("other")), Severity::ok);
    EXPECT_TRUE(report.findingsFor(FindingSubject::volume("other")).empty());
}

}  // namespace
}  // namespace corvel
