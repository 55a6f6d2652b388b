// Each recorded machine replayed through the real discovery, then diagnosed and assessed: the
// findings and health each one must produce, pinned so that a change in any rule shows up here.
#include "command/RecordedCommandRunner.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"
#include "storage/MachineStorage.h"
#include "storage/RecordedMachine.h"
#include "support/Golden.h"

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

std::vector<DimensionAssessment> assess(const Replayed& r,
                                        const std::vector<HealthAssessment::ExpectedVolume>& expected = {},
                                        const std::map<std::string, TimePoint>& verified = {}) {
    return HealthAssessment::assess(r.snapshot, r.report, {}, expected, verified);
}

// Every recorded machine's findings (title, detail, evidence, recommendation), verdict, score and
// health in one reviewed file: the MacBook Air healthy but unproven where nothing was checked (and
// again with every volume verified and its workspace missing), the Mac Studio's ExFAT disk behind a
// USB bridge that hides SMART (its network share in no evidence), the Mac mini nearly full with a
// failing disk, and the Linux workstation's exFAT stick.
TEST(RecordedMachines, DiagnosesMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* name :
         {"macbook-air-m2", "mac-studio-external-usb", "mac-mini-flaky-tools", "linux-workstation"}) {
        const auto r = replay(name);
        EXPECT_EQ(r.report.generatedAt, r.snapshot.capturedAt) << name;
        rendered[name] = {{"findings", r.report.findings},
                          {"overallSeverity", r.report.overallSeverity()},
                          {"healthScore", r.report.healthScore()},
                          {"actionableCount", r.report.actionableCount()},
                          {"health", assess(r)}};
    }
    const auto air = replay("macbook-air-m2");
    std::map<std::string, TimePoint> verified;
    for (const auto& volume : air.snapshot.volumes) verified[volume.id] = air.snapshot.capturedAt;
    rendered["macbook-air-m2, all verified, workspace missing"] =
        assess(air, {{"1F2E3D4C-5B6A-4978-8695-A4B3C2D1E0F9", "Work", "the workspace"}}, verified);
    testing::expectGolden("diagnostics/recorded-machines.json", rendered);
}

TEST(RecordedMachines, MacStudioWithDockerGivesTheSameDiagnosisRunningOrStopped) {
    const auto running = replay("mac-docker-running");
    const auto stopped = replay("mac-docker-stopped");
    EXPECT_EQ(findingKeys(running.report), findingKeys(stopped.report));
    EXPECT_EQ(findingKeys(running.report), findingKeys(replay("mac-studio-external-usb").report));
}

TEST(RecordedMachines, LinuxDockerEngineHostDiagnosesLikeTheWorkstationItRunsOn) {
    const auto docker = replay("linux-docker-engine");
    const auto workstation = replay("linux-workstation");
    EXPECT_EQ(findingKeys(docker.report), findingKeys(workstation.report));
    EXPECT_EQ(healthLines(assess(docker)), healthLines(assess(workstation)));
}

}  // namespace
}  // namespace corvel
