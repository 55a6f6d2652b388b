// Each recorded machine replayed through the real discovery, then diagnosed and assessed: the
// findings and health each one must produce, pinned so that a change in any rule shows up here.
#include "command/RecordedCommandRunner.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"
#include "storage/MachineStorage.h"
#include "storage/RecordedMachine.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

struct Replayed {
    StorageSnapshot snapshot;
    DiagnosticReport report;
};

Replayed replay(const std::string& name) {
    const auto directory = std::filesystem::path(CORVEL_FIXTURES_DIR) / "machines" / name;
    const auto machine = RecordedMachine::load(directory);
    auto runner = RecordedCommandRunner::load(directory);
    Replayed replayed;
    replayed.snapshot = MachineStorage::replay(runner, machine, machine.capturedAt);
    replayed.report = DiagnosticEngine().evaluate(replayed.snapshot);
    return replayed;
}

// "severity ruleID|subject id" per finding, in report order.
std::vector<std::string> findingKeys(const DiagnosticReport& report) {
    std::vector<std::string> keys;
    for (const auto& f : report.findings) keys.push_back(std::to_string(static_cast<int>(f.severity)) + " " + f.id());
    return keys;
}

// "dimension status: summary" per dimension, in dimension order.
std::vector<std::string> healthLines(const std::vector<DimensionAssessment>& health) {
    std::vector<std::string> lines;
    for (const auto& a : health)
        lines.push_back(std::string(rawValue(a.dimension)) + " " + std::string(rawValue(a.status)) + ": " + a.summary);
    return lines;
}

std::vector<DimensionAssessment> assess(const Replayed& r, const std::vector<HealthAssessment::ExpectedVolume>& expected = {},
                                        const std::map<std::string, TimePoint>& verified = {}) {
    return HealthAssessment::assess(r.snapshot, r.report, {}, expected, verified);
}

const std::string unverified = "Formats look suitable; integrity not verified (run Verify in Disk Operations).";

TEST(RecordedMachines, MacBookAirIsHealthyButUnprovenWhereNothingWasChecked) {
    const auto r = replay("macbook-air-m2");
    EXPECT_TRUE(r.report.findings.empty());
    EXPECT_EQ(r.report.generatedAt, r.snapshot.capturedAt);
    EXPECT_EQ(r.report.healthScore(), 100);
    EXPECT_EQ(healthLines(assess(r)), (std::vector<std::string>{
                                          "physical normal: All drives report SMART verified.",
                                          "fileSystem unknown: " + unverified,
                                          "usage normal: Free space within thresholds.",
                                          "connection unknown: Topology not yet inspected.",
                                          "availability normal: All expected volumes are online.",
                                      }));
}

TEST(RecordedMachines, MacBookAirWithEveryVolumeVerifiedAndAMissingWorkspace) {
    const auto r = replay("macbook-air-m2");
    std::map<std::string, TimePoint> verified;
    for (const auto& volume : r.snapshot.volumes) verified[volume.id] = r.snapshot.capturedAt;
    const auto health = assess(r, {{"1F2E3D4C-5B6A-4978-8695-A4B3C2D1E0F9", "Work", "the workspace"}}, verified);
    EXPECT_EQ(health[1].status, HealthStatus::normal);
    EXPECT_EQ(health[1].summary, "All volumes verified.");
    EXPECT_EQ(health[4].status, HealthStatus::critical);
    EXPECT_EQ(health[4].summary, "Work is not connected");
    EXPECT_EQ(health[4].evidence, std::vector<std::string>{"Work expected but not mounted"});
}

TEST(RecordedMachines, MacStudioWithExternalUsbDisk) {
    const auto r = replay("mac-studio-external-usb");
    EXPECT_EQ(findingKeys(r.report), (std::vector<std::string>{
                                         "2 volume.fileSystem|volume:6A1C3E5B-0000-4000-8000-53D7F9A1C3E5",
                                         "1 volume.ownership|volume:6A1C3E5B-0000-4000-8000-53D7F9A1C3E5",
                                         "1 volume.encryption|volume:D3F5A7C9-1B3D-4F5A-97C9-E1B3D5F7A9C1",
                                         "1 volume.ownership|volume:D3F5A7C9-1B3D-4F5A-97C9-E1B3D5F7A9C1",
                                         "1 disk.smart|disk:disk4",
                                     }));
    EXPECT_EQ(r.report.findings[0].title, "ExFAT isn't suited to development");
    EXPECT_EQ(r.report.findings[4].detail,
              "The USB bridge for WD Elements 25A3 does not pass SMART data to macOS, so drive wear can't be monitored.");
    EXPECT_EQ(r.report.overallSeverity(), Severity::warning);
    EXPECT_EQ(r.report.healthScore(), 90);

    const auto health = assess(r);
    EXPECT_EQ(healthLines(health), (std::vector<std::string>{
                                       "physical unknown: 1 verified; 1 drive can't report SMART.",
                                       "fileSystem attention: ExFAT isn't suited to development",
                                       "usage normal: Free space within thresholds.",
                                       "connection unknown: Topology not yet inspected.",
                                       "availability normal: All expected volumes are online.",
                                   }));
    // The network share is in the snapshot but in neither the file-system nor the usage evidence.
    EXPECT_EQ(health[2].evidence.size(), 3u);
    for (const auto& line : health[2].evidence) EXPECT_EQ(line.find("media"), std::string::npos) << line;
}

TEST(RecordedMachines, MacStudioWithDockerGivesTheSameDiagnosisRunningOrStopped) {
    const auto running = replay("mac-docker-running");
    const auto stopped = replay("mac-docker-stopped");
    EXPECT_EQ(findingKeys(running.report), findingKeys(stopped.report));
    EXPECT_EQ(findingKeys(running.report), findingKeys(replay("mac-studio-external-usb").report));
}

TEST(RecordedMachines, MacMiniNearlyFullWithAFailingDisk) {
    const auto r = replay("mac-mini-flaky-tools");
    EXPECT_EQ(findingKeys(r.report), (std::vector<std::string>{
                                         "3 volume.freeSpace|volume:7B9D1F3A-5C7E-4B9D-B1F3-A5C7E9B1D3F5",
                                         "3 disk.smart|disk:disk6",
                                         "2 volume.freeSpace|volume:4A6C8E0A-2C4E-3A6C-88E0-A2C4E6A8C0E2",
                                         "1 volume.ownership|volume:6C8E0A2C-4E6A-3C8E-A0A2-C4E6A8C0E2A4",
                                     }));
    const auto& full = r.report.findings[0];
    EXPECT_EQ(full.title, "Almost out of space");
    EXPECT_EQ(full.detail, "Macintosh HD has 10.99 GB free (4%). Builds, simulators, and updates fail unpredictably "
                           "when space runs out.");
    EXPECT_EQ(full.evidence, "10.99 GB available of 245.11 GB (thresholds: warning < 15%, critical < 5%)");
    EXPECT_EQ(full.recommendation,
              "Review Developer Storage for DerivedData, old simulators, and package caches you can clear.");
    EXPECT_EQ(r.report.findings[2].recommendation, "Archive or move large folders to another drive.");
    EXPECT_EQ(r.report.overallSeverity(), Severity::critical);
    EXPECT_EQ(r.report.healthScore(), 30);
    EXPECT_EQ(r.report.actionableCount(), 3u);

    EXPECT_EQ(healthLines(assess(r)), (std::vector<std::string>{
                                          "physical critical: 1 physical issue reported by the drives.",
                                          "fileSystem unknown: " + unverified,
                                          "usage critical: Almost out of space",
                                          "connection unknown: Topology not yet inspected.",
                                          "availability normal: All expected volumes are online.",
                                      }));
}

TEST(RecordedMachines, LinuxWorkstation) {
    const auto r = replay("linux-workstation");
    EXPECT_EQ(findingKeys(r.report), std::vector<std::string>{"2 volume.fileSystem|volume:64C2-8F1D"});
    EXPECT_EQ(r.report.findings[0].subjectName, "USB STICK");
    EXPECT_EQ(healthLines(assess(r)), (std::vector<std::string>{
                                          "physical unknown: 2 verified; 1 drive can't report SMART.",
                                          "fileSystem attention: EXFAT isn't suited to development",
                                          "usage normal: Free space within thresholds.",
                                          "connection unknown: Topology not yet inspected.",
                                          "availability normal: All expected volumes are online.",
                                      }));
}

TEST(RecordedMachines, LinuxDockerEngineHostDiagnosesLikeTheWorkstationItRunsOn) {
    const auto docker = replay("linux-docker-engine");
    const auto workstation = replay("linux-workstation");
    EXPECT_EQ(findingKeys(docker.report), findingKeys(workstation.report));
    EXPECT_EQ(healthLines(assess(docker)), healthLines(assess(workstation)));
}

}  // namespace
}  // namespace corvel
