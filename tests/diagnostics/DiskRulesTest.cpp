#include "DiagnosticsFixtures.h"
#include "diagnostics/DiagnosticEngine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace corvel {
namespace {

using testing::externalDisk;
using testing::internalDisk;
using testing::nvmeDisk;
using testing::NVMe;

std::vector<Finding> rule(const std::vector<Finding>& findings, const std::string& ruleID) {
    std::vector<Finding> matching;
    for (const auto& f : findings)
        if (f.ruleID == ruleID) matching.push_back(f);
    return matching;
}

std::vector<Finding> diskFindings(const PhysicalDisk& disk, DiagnosticThresholds thresholds = {}) {
    return DiagnosticEngine(thresholds).diskFindings(disk);
}

TEST(SmartRule, FailingDiskIsCriticalWithExactTexts) {
    auto disk = internalDisk("disk0", "APPLE SSD AP1024Z Media");
    disk.smartStatus = SMARTStatus::failing;
    const auto findings = diskFindings(disk);
    ASSERT_EQ(findings.size(), 1u);
    const auto& f = findings[0];
    EXPECT_EQ(f.ruleID, "disk.smart");
    EXPECT_EQ(f.severity, Severity::critical);
    EXPECT_EQ(f.subject, FindingSubject::disk("disk0"));
    EXPECT_EQ(f.subjectName, "APPLE SSD AP1024Z");
    EXPECT_EQ(f.dimension, HealthDimension::physical);
    EXPECT_EQ(f.title, "SMART reports the drive is failing");
    EXPECT_EQ(f.detail, "APPLE SSD AP1024Z reported a failing SMART status. Data loss may be imminent.");
    EXPECT_EQ(f.recommendation, "Back up this drive immediately and plan a replacement.");
    EXPECT_EQ(f.evidence, "diskutil info disk0: SMARTStatus = Failing");
    EXPECT_EQ(f.impact, "The drive may stop working or return corrupt data.");
}

TEST(SmartRule, NotSupportedOnlyMattersForExternalDisks) {
    auto internal = internalDisk();
    internal.smartStatus = SMARTStatus::notSupported;
    EXPECT_TRUE(diskFindings(internal).empty());

    const auto findings = diskFindings(externalDisk("disk4", "Samsung T7 Media"));
    ASSERT_EQ(findings.size(), 1u);
    const auto& f = findings[0];
    EXPECT_EQ(f.ruleID, "disk.smart");
    EXPECT_EQ(f.severity, Severity::info);
    EXPECT_EQ(f.title, "SMART health is not visible");
    EXPECT_EQ(f.detail,
              "The USB bridge for Samsung T7 does not pass SMART data to macOS, so drive wear can't be monitored.");
    EXPECT_EQ(f.recommendation, "Keep regular backups; consider an enclosure with SMART pass-through for critical data.");
    EXPECT_EQ(f.evidence, "diskutil info disk4: SMARTStatus = Not Supported");
    EXPECT_EQ(f.impact, "Physical health is unknown, not proven good.");
}

TEST(SmartRule, UnknownBusIsCalledExternalAndEmptyMediaNameFallsBackToId) {
    auto disk = externalDisk("disk7", "");
    disk.busProtocol.reset();
    const auto findings = diskFindings(disk);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].subjectName, "disk7");
    EXPECT_EQ(findings[0].detail.rfind("The external bridge for disk7 does not pass", 0), 0u) << findings[0].detail;
}

TEST(SmartRule, VerifiedAndUnknownDisksYieldNothing) {
    for (auto status : {SMARTStatus::verified, SMARTStatus::unknown}) {
        auto disk = externalDisk();
        disk.smartStatus = status;
        EXPECT_TRUE(diskFindings(disk).empty()) << rawValue(status);
    }
}

TEST(WearRule, WarningFromThresholdCriticalFromOneHundred) {
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().used(79))).empty());

    auto at80 = rule(diskFindings(nvmeDisk(NVMe().used(80))), "disk.nvme.wear");
    ASSERT_EQ(at80.size(), 1u);
    EXPECT_EQ(at80[0].severity, Severity::warning);
    EXPECT_EQ(at80[0].title, "SSD endurance 80% consumed");
    EXPECT_EQ(at80[0].detail, "APPLE SSD AP1024Z has used 80% of its rated write endurance.");
    EXPECT_EQ(at80[0].evidence, "NVMe health log PERCENTAGE_USED = 80");
    EXPECT_EQ(at80[0].recommendation,
              "Move heavy build caches (DerivedData, simulators) to an external SSD and plan a replacement.");
    EXPECT_EQ(at80[0].impact, "Worn flash loses write endurance and eventually goes read-only.");

    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().used(99))), "disk.nvme.wear").at(0).severity, Severity::warning);
    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().used(100))), "disk.nvme.wear").at(0).severity, Severity::critical);
    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().used(140))), "disk.nvme.wear").at(0).title,
              "SSD endurance 140% consumed");
}

TEST(WearRule, FollowsConfiguredThreshold) {
    DiagnosticThresholds strict;
    strict.nvmeWearWarningPercent = 50;
    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().used(50)), strict), "disk.nvme.wear").size(), 1u);
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().used(49)), strict).empty());
}

TEST(SpareRule, FiresAtOrBelowThresholdOnlyWhenBothKnown) {
    auto equal = rule(diskFindings(nvmeDisk(NVMe().spare(10).spareThreshold(10))), "disk.nvme.spare");
    ASSERT_EQ(equal.size(), 1u);
    EXPECT_EQ(equal[0].severity, Severity::critical);
    EXPECT_EQ(equal[0].title, "Spare capacity below threshold");
    EXPECT_EQ(equal[0].detail, "Available spare is 10% (threshold 10%).");
    EXPECT_EQ(equal[0].evidence, "NVMe AVAILABLE_SPARE = 10, AVAILABLE_SPARE_THRESHOLD = 10");
    EXPECT_EQ(equal[0].recommendation, "Back up now; the controller is running out of replacement blocks.");
    EXPECT_EQ(equal[0].impact, "The drive can switch to read-only mode without warning.");

    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().spare(3).spareThreshold(10))), "disk.nvme.spare").size(), 1u);
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().spare(11).spareThreshold(10))).empty());
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().spare(0))).empty());
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().spareThreshold(10))).empty());
}

TEST(MediaErrorRule, CountsFromOneWithSingularAndPlural) {
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().mediaErrors(0))).empty());
    auto one = rule(diskFindings(nvmeDisk(NVMe().mediaErrors(1))), "disk.nvme.mediaErrors");
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].severity, Severity::warning);
    EXPECT_EQ(one[0].title, "1 media error recorded");
    EXPECT_EQ(one[0].detail, "The controller has logged unrecovered data integrity errors.");
    EXPECT_EQ(one[0].evidence, "NVMe MEDIA_ERRORS = 1");
    EXPECT_EQ(one[0].recommendation, "Verify backups and watch whether the count keeps rising.");
    EXPECT_EQ(one[0].impact, "Some data may already be unreadable.");
    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().mediaErrors(2))), "disk.nvme.mediaErrors").at(0).title,
              "2 media errors recorded");
}

TEST(TemperatureRule, ComparesUnroundedAndPrintsRoundedHalfAwayFromZero) {
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().temperature(69.9))).empty());
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().temperature(69.6))).empty());

    auto exact = rule(diskFindings(nvmeDisk(NVMe().temperature(70.0))), "disk.nvme.temperature");
    ASSERT_EQ(exact.size(), 1u);
    EXPECT_EQ(exact[0].severity, Severity::warning);
    EXPECT_EQ(exact[0].title, "Drive running hot (70 \u00B0C)");
    EXPECT_EQ(exact[0].evidence, "NVMe TEMPERATURE = 70 \u00B0C");
    EXPECT_EQ(exact[0].detail, "Sustained high temperatures throttle performance and shorten SSD life.");
    EXPECT_EQ(exact[0].recommendation, "Improve airflow or pause heavy parallel builds.");
    EXPECT_EQ(exact[0].impact, "Thermal throttling slows I/O.");

    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().temperature(70.4))), "disk.nvme.temperature").at(0).title,
              "Drive running hot (70 \u00B0C)");
    EXPECT_EQ(rule(diskFindings(nvmeDisk(NVMe().temperature(72.5))), "disk.nvme.temperature").at(0).title,
              "Drive running hot (73 \u00B0C)");
}

TEST(TemperatureRule, NonFiniteReadingsNeverFire) {
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().temperature(std::numeric_limits<double>::quiet_NaN()))).empty());
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe().temperature(std::numeric_limits<double>::infinity()))).empty());
}

TEST(DiskRules, NoNvmeDataMeansNoNvmeRulesAndRulesKeepTheirOrder) {
    EXPECT_TRUE(diskFindings(internalDisk()).empty());
    EXPECT_TRUE(diskFindings(nvmeDisk(NVMe())).empty());

    auto disk = nvmeDisk(NVMe().used(100).spare(1).spareThreshold(5).temperature(80.0).mediaErrors(3));
    disk.smartStatus = SMARTStatus::failing;
    std::vector<std::string> order;
    for (const auto& f : diskFindings(disk)) order.push_back(f.ruleID);
    EXPECT_EQ(order, (std::vector<std::string>{"disk.smart", "disk.nvme.wear", "disk.nvme.spare",
                                               "disk.nvme.mediaErrors", "disk.nvme.temperature"}));
}

}  // namespace
}  // namespace corvel
