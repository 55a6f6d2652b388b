// `velmora consent`, `velmora update` and `velmora uninstall` through the real binary, each run
// with a data folder and home of its own.
#include "ConsentCommands.h"

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
using clitest::velmora;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class ConsentCommands : public ::testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", folder_.path("data")});
        return velmora(arguments, {"NO_COLOR=1"});
    }
    Json state() const {
        const Outcome outcome = run({"--json", "consent"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out);
    }

    clitest::TemporaryFolder folder_;
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

    const Json log = Json::parse(run({"--json", "consent", "log"}).out);
    ASSERT_EQ(log["ledger"]["records"].size(), 3u);
    EXPECT_EQ(log["ledger"]["records"][2]["action"], "withdrawn");
    EXPECT_THAT(run({"consent", "log"}).out,
                AllOf(HasSubstr("Accepted"), HasSubstr("Updated"), HasSubstr("Withdrawn")));
}

TEST_F(ConsentCommands, BadScopesAreUsageErrorsAndACorruptLedgerAsksAgain) {
    for (const std::vector<std::string>& bad : {std::vector<std::string>{"consent", "accept", "--scope", "teleport"},
                                                std::vector<std::string>{"consent", "update", "--scope", "benchmark"},
                                                std::vector<std::string>{"consent", "update"}}) {
        const Outcome outcome = run(bad);
        EXPECT_EQ(outcome.status, 2) << bad.back();
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
    EXPECT_FALSE(fs::exists(folder_.path("data/consent.json")));

    folder_.write("data/consent.json", "{\"records\": [tor");
    EXPECT_EQ(state()["state"], "notAccepted");
    ASSERT_EQ(run({"consent", "accept"}).status, 0);
    EXPECT_EQ(Json::parse(*AtomicFile::read(folder_.path("data/consent.json")))["records"].size(), 1u);
}

TEST_F(ConsentCommands, TheGateRefusesWithOneLineUntilTheScopeIsGranted) {
    const auto families = [](CLI::App& app, cli::CliContext& context) {
        cli::registerConsentCommands(app, context);
        app.add_subcommand("act", "a state-changing command")->callback([&context] {
            cli::requireConsent(context, ConsentScope::diskOperations);
            context.out() << "acted\n";
        });
    };
    const auto act = [&] { return clitest::velmoraInProcess({"--data-dir", folder_.path("data"), "act"}, families); };
    Outcome refused = act();
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err,
                AllOf(HasSubstr("diskOperations"), HasSubstr("'velmora consent accept --scope diskOperations'")));
    EXPECT_THAT(refused.out, Not(HasSubstr("acted")));

    ASSERT_EQ(run({"consent", "accept"}).status, 0);
    EXPECT_THAT(act().err, HasSubstr("'velmora consent update --scope diskOperations=on'"));
    ASSERT_EQ(run({"consent", "update", "--scope", "diskOperations=on"}).status, 0);
    const Outcome granted = act();
    EXPECT_EQ(granted.status, 0) << granted.err;
    EXPECT_EQ(granted.out, "acted\n");
}

TEST_F(ConsentCommands, EveryStateChangingFamilyAsksForItsScopeBeforeDoingAnything) {
    struct Family {
        std::vector<std::string> words;
        std::string scope;
    };
    const auto home = folder_.path("home");
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
        auto words = family.words;
        words.insert(words.begin(), {"--data-dir", folder_.path("data")});
        const auto refused = velmora(words, {"NO_COLOR=1", "HOME=" + home, "XDG_CONFIG_HOME=" + home + "/config"});
        EXPECT_EQ(refused.status, 1) << family.words.back();
        EXPECT_THAT(refused.err, HasSubstr("velmora consent accept --scope " + family.scope));
        EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1) << refused.err;
    }
    // Nothing was attempted: no audit log, no action record, no autostart entry.
    EXPECT_FALSE(fs::exists(folder_.path("data/operations-audit.json")));
    EXPECT_FALSE(fs::exists(folder_.path("data/process-actions.json")));
    EXPECT_FALSE(fs::exists(home + "/config/autostart"));
}

// A recorded machine whose gh answers the release query for two repositories.
std::string recordedGitHub(const clitest::TemporaryFolder& folder) {
    const std::vector<std::string> view{
        "release", "view", "--repo", "velmora-app/velmora", "--json", "tagName,name,body,publishedAt,url,assets"};
    auto signedOut = view;
    signedOut[3] = "someone/private";
    const Json machine{{"name", "gh replay"},
                       {"platform", "linux"},
                       {"capturedAt", "2026-11-02T09:30:00Z"},
                       {"home", "/home/me"},
                       {"volumes", Json::array()},
                       {"commands",
                        {{{"executable", "/usr/bin/gh"}, {"arguments", view}, {"stdout", "view.json"}},
                         {{"executable", "/usr/bin/gh"},
                          {"arguments", signedOut},
                          {"status", 4},
                          {"stderr", "To get started with GitHub CLI, please run:  gh auth login\n"}}}}};
    folder.write("gh/machine.json", machine.dump());
    folder.write("gh/view.json", R"({"tagName": "v0.2.0", "body": "Faster scans.\n\nBuild: 202611021\n",
        "assets": [{"name": "velmora-0.2.0-linux-x86_64.tar.gz"}]})");
    return folder.path("gh");
}

TEST_F(ConsentCommands, UpdateCheckSaysWhatIsAvailableOrWhyItCannot) {
    const auto replay = recordedGitHub(folder_);
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
    const std::vector<std::string> home{"HOME=" + folder_.path("home"),
                                        "XDG_CONFIG_HOME=", "XDG_CACHE_HOME=", "XDG_DATA_HOME=", "NO_COLOR=1"};
    folder_.write("data/consent.json", "{}");
    folder_.write("data/thesis.tex", "mine");
    folder_.write("home/.config/velmora/ui.json", "{}");
    folder_.write("home/.cache/velmora/index", "12345");
    folder_.write("home/.config/editor/settings.json", "mine");
    const auto uninstall = [&](std::vector<std::string> extra) {
        std::vector<std::string> arguments{"--data-dir", folder_.path("data"), "uninstall"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return velmora(arguments, home);
    };

    const Outcome dryRun = uninstall({"--dry-run"});
    ASSERT_EQ(dryRun.status, 0) << dryRun.err;
    EXPECT_THAT(dryRun.out, AllOf(HasSubstr(folder_.path("home/.cache/velmora")), HasSubstr("consent.json"),
                                  Not(HasSubstr("editor")), HasSubstr("Dry run: nothing was removed.")));
    EXPECT_EQ(uninstall({}).status, 2);  // no terminal to confirm on, no --yes
    EXPECT_TRUE(fs::exists(folder_.path("data/consent.json")));

    const Outcome removed = uninstall({"--yes"});
    ASSERT_EQ(removed.status, 0) << removed.err;
    for (const char* gone : {"data/consent.json", "home/.config/velmora", "home/.cache/velmora"})
        EXPECT_FALSE(fs::exists(folder_.path(gone))) << gone;
    for (const char* kept : {"data/thesis.tex", "home/.config/editor/settings.json"})
        EXPECT_TRUE(fs::exists(folder_.path(kept))) << kept;
}

}  // namespace
}  // namespace corvel
