// `velmora diagnose`, `health` and `settings`, driven through the real binary on recorded machines
// with a temporary data folder, as a person (or a script reading --json) would use them.
#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"
#include "common/Json.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

using clitest::machine;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class VelmoraCommands : public ::testing::Test {
protected:
    std::string settingsFile() const { return box_.path("data/settings.json"); }
    clitest::Sandbox box_;
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
        const auto outcome = box_.run({"--replay", machine(name), command});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[std::string(command) + " " + name] = clitest::outputLines(outcome.out, machine(name));
    }
    testing::expectGolden("cli/text-outputs.json", rendered);
}

TEST_F(VelmoraCommands, JsonIsOneDocumentPerCommand) {
    EXPECT_EQ(box_.json({"--replay", machine("mac-mini-flaky-tools"), "diagnose"})["generatedAt"],
              "2026-11-03T08:05:00Z");
    EXPECT_EQ(box_.json({"--replay", machine("macbook-air-m2"), "health"})[0]["dimension"], "physical");
    const auto status = box_.json({"--replay", machine("mac-mini-flaky-tools"), "status"});
    EXPECT_THAT(status["report"]["findings"], SizeIs(4));
    EXPECT_THAT(status["health"], SizeIs(5));
    EXPECT_TRUE(status.contains("snapshot"));
}

TEST_F(VelmoraCommands, SettingsSetIsSavedAndUsedByDiagnoseAndHealth) {
    const auto shown = box_.run({"settings"});
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr(settingsFile()));
    EXPECT_THAT(shown.out, HasSubstr("thresholds.warningFreeFraction"));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));
    EXPECT_EQ(box_.json({"settings"})["settings"]["intervalMinutes"], 5);

    const std::vector<std::string> diagnose{"--replay", machine("macbook-air-m2"), "diagnose"};
    const auto before = box_.json(diagnose)["findings"].size();
    const auto set = box_.run({"settings", "set", "thresholds.warningFreeFraction", "0.9"});
    ASSERT_EQ(set.status, 0) << set.err;
    EXPECT_THAT(set.out, HasSubstr("thresholds.warningFreeFraction = 0.9"));
    EXPECT_EQ(box_.json({"settings"})["settings"]["thresholds"]["warningFreeFraction"], 0.9);
    EXPECT_THAT(box_.run(diagnose).out, HasSubstr("Overall: Warning \u00B7 health score 80/100 \u00B7 2 warnings"));
    EXPECT_GT(box_.json(diagnose)["findings"].size(), before);

    ASSERT_EQ(box_.run({"settings", "set", "expectedVolumes",
                        R"([{"volumeID":"NOT-MOUNTED","name":"Work SSD","reason":"the workspace"}])"})
                  .status,
              0);
    const auto health = box_.json({"--replay", machine("macbook-air-m2"), "health"});
    EXPECT_EQ(health[4]["status"], "critical");
    EXPECT_EQ(health[4]["summary"], "Work SSD is not connected");
}

TEST_F(VelmoraCommands, SettingsSetRefusesUnknownKeysAndBadValuesAndUnreadableSettingsAreKept) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> refused{
        {{"settings", "set", "intervalMinutez", "5"}, "'intervalMinutez'"},
        {{"settings", "set", "intervalMinutes", "soon"}, "velmora: "},
        {{"settings", "set", "thresholds.criticalFreeFraction", "0.5"}, "velmora: "},
        {{"settings", "set", "intervalMinutes"}, "velmora: "}};
    for (const auto& [arguments, needle] : refused) EXPECT_TRUE(clitest::failsWith(box_.run(arguments), 2, needle));
    EXPECT_FALSE(std::filesystem::exists(settingsFile()));

    box_.write("data/settings.json", "{ not json");
    const auto outcome = box_.run({"settings"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, HasSubstr("velmora: warning: settings file is unreadable"));
    EXPECT_EQ(AtomicFile::read(settingsFile()), "{ not json");
    EXPECT_EQ(box_.run({"settings", "set", "intervalMinutes", "7"}).status, 0);
    EXPECT_EQ(box_.json({"settings"})["settings"]["intervalMinutes"], 7);
}

}  // namespace
}  // namespace corvel
