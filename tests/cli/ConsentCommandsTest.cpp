// `velmora consent`, `velmora update` and `velmora uninstall` through the real binary, each run
// with a data folder and home of its own.
#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

namespace fs = std::filesystem;
using clitest::Outcome;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class ConsentCommands : public ::testing::Test {
protected:
    Outcome run(const std::vector<std::string>& arguments) const { return box_.run(arguments); }
    Json state() const { return box_.json({"consent"}); }
    std::string path(const std::string& relative) const { return box_.path(relative); }

    clitest::Sandbox box_;
};

TEST_F(ConsentCommands, AcceptUpdateWithdrawAndTheLog) {
    EXPECT_EQ(state()["state"], "notAccepted");
    EXPECT_THAT(run({"consent"}).out,
                AllOf(HasSubstr("Terms 2026-10-24.2"), HasSubstr("Write temporary benchmark files"),
                      HasSubstr("Not accepted yet")));

    const Outcome accepted = run({"consent", "accept", "--scope", "benchmark"});
    ASSERT_EQ(accepted.status, 0) << accepted.err;
    EXPECT_THAT(accepted.out, HasSubstr("Allowed: readStorage, benchmark"));
    EXPECT_EQ(state()["granted"]["benchmark"], true);

    ASSERT_EQ(run({"consent", "update", "--scope", "benchmark=off", "--scope", "processControl=on"}).status, 0);
    const Json afterUpdate = state();
    EXPECT_EQ(afterUpdate["granted"]["benchmark"], false);
    EXPECT_EQ(afterUpdate["granted"]["processControl"], true);
    EXPECT_EQ(afterUpdate["current"]["action"], "updated");

    const Outcome keepRequired = run({"consent", "update", "--scope", "readStorage=off"});
    EXPECT_EQ(keepRequired.status, 1);
    EXPECT_THAT(keepRequired.err, HasSubstr("cannot work without “Read storage information”"));

    ASSERT_EQ(run({"consent", "withdraw"}).status, 0);
    EXPECT_EQ(state()["state"], "withdrawn");
    const Outcome refusedUpdate = run({"consent", "update", "--scope", "benchmark=on"});
    EXPECT_EQ(refusedUpdate.status, 1);
    EXPECT_THAT(refusedUpdate.err, HasSubstr("velmora consent accept"));

    EXPECT_EQ(box_.json({"consent", "log"})["ledger"]["records"].size(), 3u);
    EXPECT_THAT(run({"consent", "log"}).out,
                AllOf(HasSubstr("Accepted"), HasSubstr("Updated"), HasSubstr("Withdrawn")));
}

TEST_F(ConsentCommands, BadScopesAreUsageErrorsAndACorruptLedgerAsksAgain) {
    for (const std::vector<std::string>& bad : {std::vector<std::string>{"consent", "accept", "--scope", "teleport"},
                                                std::vector<std::string>{"consent", "update", "--scope", "benchmark"},
                                                std::vector<std::string>{"consent", "update"}}) {
        EXPECT_TRUE(clitest::failsWith(run(bad), 2, "velmora: "));
    }
    EXPECT_FALSE(fs::exists(path("data/consent.json")));

    box_.write("data/consent.json", "{\"records\": [tor");
    EXPECT_EQ(state()["state"], "notAccepted");
    ASSERT_EQ(run({"consent", "accept"}).status, 0);
    EXPECT_EQ(Json::parse(*AtomicFile::read(path("data/consent.json")))["records"].size(), 1u);
}

TEST_F(ConsentCommands, EveryStateChangingFamilyAsksForItsScopeBeforeDoingAnything) {
    struct Family {
        std::vector<std::string> words;
        std::string scope;
    };
    const auto home = path("home");
    const std::vector<Family> families{
        {{"--replay", clitest::machine("mac-studio-disk-actions"), "ops", "run", "unmount", "/Volumes/Projects",
          "--yes"},
         "diskOperations"},
        {{"--replay", clitest::machine("mac-studio-disk-actions"), "ops", "mkdir", "/Volumes/Projects", "New", "--yes"},
         "diskOperations"},
        {{"processes", "quit", "1", "--yes"}, "processControl"},
        {{"--replay", clitest::machine("linux-workstation"), "agent", "register"}, "backgroundAgent"},
    };
    for (const auto& family : families) {
        EXPECT_TRUE(clitest::failsWith(box_.run(family.words, {"XDG_CONFIG_HOME=" + home + "/config"}), 1,
                                       "velmora consent accept --scope " + family.scope));
    }
    // Nothing was attempted: no audit log, no action record, no autostart entry.
    EXPECT_FALSE(fs::exists(path("data/operations-audit.json")));
    EXPECT_FALSE(fs::exists(path("data/process-actions.json")));
    EXPECT_FALSE(fs::exists(home + "/config/autostart"));
}

TEST_F(ConsentCommands, UpdateCheckSaysWhatIsAvailableOrWhyItCannot) {
    // A recorded machine whose gh answers the release query for two repositories.
    const auto replay = testing::fixturePath("gh/replay");
    const Outcome available = run({"--replay", replay, "update", "check"});
    ASSERT_EQ(available.status, 0) << available.err;
    EXPECT_THAT(available.out, AllOf(HasSubstr("Velmora 0.2.0 is available (you have " VELMORA_VERSION ")"),
                                     HasSubstr("Faster scans."), HasSubstr("build 202611021")));

    const Outcome signedOut = run({"--replay", replay, "update", "check", "--repo", "someone/private"});
    EXPECT_EQ(signedOut.status, 1);
    EXPECT_EQ(signedOut.err, "velmora: Not signed in to GitHub. Run “gh auth login” once.\n");

    EXPECT_EQ(run({"--replay", replay, "update", "check", "--repo", "no-slash"}).status, 2);
}

TEST_F(ConsentCommands, UninstallRemovesOnlyWhatVelmoraKeeps) {
    const std::vector<std::string> home{"XDG_CONFIG_HOME=", "XDG_CACHE_HOME=", "XDG_DATA_HOME="};
    box_.write("data/consent.json", "{}");
    box_.write("data/thesis.tex", "mine");
    box_.write("home/.config/velmora/ui.json", "{}");
    box_.write("home/.cache/velmora/index", "12345");
    box_.write("home/.config/editor/settings.json", "mine");
    const auto uninstall = [&](std::vector<std::string> extra) {
        extra.insert(extra.begin(), "uninstall");
        return box_.run(extra, home);
    };

    const Outcome dryRun = uninstall({"--dry-run"});
    ASSERT_EQ(dryRun.status, 0) << dryRun.err;
    EXPECT_THAT(dryRun.out, AllOf(HasSubstr(path("home/.cache/velmora")), HasSubstr("consent.json"),
                                  Not(HasSubstr("editor")), HasSubstr("Dry run: nothing was removed.")));
    EXPECT_EQ(uninstall({}).status, 2);  // no terminal to confirm on, no --yes
    EXPECT_TRUE(fs::exists(path("data/consent.json")));

    const Outcome removed = uninstall({"--yes"});
    ASSERT_EQ(removed.status, 0) << removed.err;
    for (const char* gone : {"data/consent.json", "home/.config/velmora", "home/.cache/velmora"})
        EXPECT_FALSE(fs::exists(path(gone))) << gone;
    for (const char* kept : {"data/thesis.tex", "home/.config/editor/settings.json"})
        EXPECT_TRUE(fs::exists(path(kept))) << kept;
}

}  // namespace
}  // namespace corvel
