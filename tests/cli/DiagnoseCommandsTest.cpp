// `velmora diagnose`, `health` and `settings`, driven through the real binary on recorded machines
// with a temporary data folder, as a person (or a script reading --json) would use them.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using corvel::Json;
using corvel::clitest::machine;
using corvel::clitest::Outcome;

class VelmoraCommands : public ::testing::Test {
protected:
    // Runs velmora without colour and with the test's private data folder.
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", dataDir_.path()});
        return corvel::clitest::velmora(arguments, {"NO_COLOR=1"});
    }

    Json runJson(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "--json");
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out);
    }

    fs::path settingsFile() const { return dataDir_.root() / "settings.json"; }

    corvel::clitest::TemporaryFolder dataDir_;
};

// What a person reads, line by line, in one reviewed file: diagnose lists each finding with its
// evidence, impact and recommendation, then the overall verdict and score; health shows the five
// dimensions; status adds the health summary under disks and volumes, leaving out findings that
// are only informative.
TEST_F(VelmoraCommands, TextOutputsMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const auto& [name, command] :
         {std::pair{"mac-mini-flaky-tools", "diagnose"}, std::pair{"macbook-air-m2", "health"},
          std::pair{"mac-mini-flaky-tools", "status"}}) {
        const auto outcome = run({"--replay", machine(name), command});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[std::string(command) + " " + name] = corvel::clitest::outputLines(outcome.out, machine(name));
    }
    corvel::testing::expectGolden("cli/text-outputs.json", rendered);
}

TEST_F(VelmoraCommands, DiagnoseJsonIsTheReportInReportOrder) {
    const auto report = runJson({"--replay", machine("mac-mini-flaky-tools"), "diagnose"});
    EXPECT_EQ(report["generatedAt"], "2026-11-03T08:05:00Z");
    ASSERT_TRUE(report["findings"].is_array());
    ASSERT_FALSE(report["findings"].empty());
    int previous = 3;
    for (const auto& finding : report["findings"]) {
        EXPECT_LE(finding["severity"].get<int>(), previous);
        previous = finding["severity"].get<int>();
        EXPECT_TRUE(finding["subject"].contains("disk") || finding["subject"].contains("volume")) << finding.dump();
    }
}

TEST_F(VelmoraCommands, HealthJsonListsTheFiveDimensions) {
    const auto health = runJson({"--replay", machine("macbook-air-m2"), "health"});
    ASSERT_TRUE(health.is_array());
    ASSERT_EQ(health.size(), 5u);
    EXPECT_EQ(health[0]["dimension"], "physical");
    EXPECT_EQ(health[3]["status"], "normal");
}

TEST_F(VelmoraCommands, SettingsShowDefaultsAndWhereTheyAreKept) {
    const auto outcome = run({"settings"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find(settingsFile().string()), std::string::npos);
    EXPECT_NE(outcome.out.find("defaults"), std::string::npos);
    EXPECT_NE(outcome.out.find("thresholds.warningFreeFraction"), std::string::npos);
    EXPECT_FALSE(fs::exists(settingsFile()));

    const auto json = runJson({"settings"});
    EXPECT_EQ(json["file"], settingsFile().string());
    EXPECT_EQ(json["settings"]["intervalMinutes"], 5);
}

TEST_F(VelmoraCommands, SettingsSetValidatesSavesAndIsUsedByDiagnose) {
    const std::vector<std::string> diagnose{"--replay", machine("macbook-air-m2"), "diagnose"};
    const auto before = runJson(diagnose);

    const auto set = run({"settings", "set", "thresholds.warningFreeFraction", "0.9"});
    ASSERT_EQ(set.status, 0) << set.err;
    EXPECT_NE(set.out.find("thresholds.warningFreeFraction = 0.9"), std::string::npos) << set.out;
    ASSERT_TRUE(fs::exists(settingsFile()));
    EXPECT_EQ(runJson({"settings"})["settings"]["thresholds"]["warningFreeFraction"], 0.9);

    const auto human = run(diagnose);
    EXPECT_NE(human.out.find("Overall: Warning \u00B7 health score 80/100 \u00B7 2 warnings"), std::string::npos)
        << human.out;

    const auto after = runJson(diagnose);
    EXPECT_GT(after["findings"].size(), before["findings"].size());
    bool lowSpace = false;
    for (const auto& finding : after["findings"]) lowSpace = lowSpace || finding["ruleID"] == "volume.freeSpace";
    EXPECT_TRUE(lowSpace);
}

TEST_F(VelmoraCommands, SettingsSetRefusesUnknownKeysAndBadValuesWithExitTwo) {
    const std::vector<std::vector<std::string>> refused{{"settings", "set", "intervalMinutez", "5"},
                                                        {"settings", "set", "intervalMinutes", "soon"},
                                                        {"settings", "set", "thresholds.criticalFreeFraction", "0.5"},
                                                        {"settings", "set", "intervalMinutes"}};
    for (const auto& arguments : refused) {
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(outcome.err.rfind("velmora: ", 0), 0u) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
    EXPECT_NE(run({"settings", "set", "intervalMinutez", "5"}).err.find("'intervalMinutez'"), std::string::npos);
    EXPECT_FALSE(fs::exists(settingsFile()));
}

TEST_F(VelmoraCommands, UnreadableSettingsAreReportedAndKept) {
    std::ofstream(settingsFile()) << "{ not json";
    const auto outcome = run({"settings"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("velmora: warning: settings file is unreadable"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.out.find("defaults"), std::string::npos);
    std::ifstream in(settingsFile());
    std::string kept((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(kept, "{ not json");

    EXPECT_EQ(run({"settings", "set", "intervalMinutes", "7"}).status, 0);
    EXPECT_EQ(runJson({"settings"})["settings"]["intervalMinutes"], 7);
}

TEST_F(VelmoraCommands, ExpectedVolumesFeedTheAvailabilityDimension) {
    const auto set = run({"settings", "set", "expectedVolumes",
                          R"([{"volumeID":"NOT-MOUNTED","name":"Work SSD","reason":"the workspace"}])"});
    ASSERT_EQ(set.status, 0) << set.err;
    const auto health = runJson({"--replay", machine("macbook-air-m2"), "health"});
    EXPECT_EQ(health[4]["dimension"], "availability");
    EXPECT_EQ(health[4]["status"], "critical");
    EXPECT_EQ(health[4]["summary"], "Work SSD is not connected");
}

TEST_F(VelmoraCommands, StatusJsonHoldsSnapshotReportAndHealth) {
    const auto document = runJson({"--replay", machine("mac-mini-flaky-tools"), "status"});
    ASSERT_TRUE(document.contains("snapshot"));
    ASSERT_TRUE(document.contains("report"));
    ASSERT_TRUE(document.contains("health"));
    EXPECT_EQ(document["report"]["findings"].size(), 4u);
    EXPECT_EQ(document["health"].size(), 5u);
}

}  // namespace
