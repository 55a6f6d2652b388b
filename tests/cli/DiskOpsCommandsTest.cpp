// `velmora ops` on a recorded Mac Studio with an external disk (Elements, held open by Finder and
// zsh) and a free volume (Projects): what is offered, the preflight, confirmation, the audit log
// and the plans. Every tool answer is recorded; nothing touches a disk of this machine.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace corvel::cli {
namespace {

using clitest::lineWith;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class OpsCommand : public ::testing::Test {
protected:
    void SetUp() override { clitest::grantConsent({ConsentScope::diskOperations}, data_.path()); }
    clitest::Outcome velmora(std::vector<std::string> words) {
        words.insert(words.end(),
                     {"--replay", clitest::machine("mac-studio-disk-actions"), "--data-dir", data_.path()});
        return clitest::velmoraInProcess(words, registerDiskOpsCommands);
    }
    Json log() {
        const auto outcome = velmora({"--json", "ops", "log"});
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return Json::parse(outcome.out);
    }
    clitest::TemporaryFolder data_;
};

TEST_F(OpsCommand, ListsTheEightOperationsWithTheirReasons) {
    const auto outcome = velmora({"ops", "disk4s2"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Elements"));
    EXPECT_THAT(lineWith(outcome.out, "First Aid"), HasSubstr("use Disk Utility › First Aid meanwhile."));
    EXPECT_THAT(lineWith(outcome.out, "Unmount"), Not(HasSubstr("can't")));

    const auto json = Json::parse(velmora({"--json", "ops", "/"}).out);
    ASSERT_EQ(json.at("availability").size(), 8u);
    EXPECT_EQ(json.at("availability").at(1).at("reason"), "The startup disk can't be unmounted.");
}

TEST_F(OpsCommand, BadInputIsOneLineNamingItAndExitTwo) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"ops", "disk99"}, "disk99"},
        {{"ops", "preflight", "unmount", "/Volumes/Nowhere"}, "/Volumes/Nowhere"},
        {{"ops", "run", "shred", "disk4s2"}, "shred"},
        {{"ops", "plan", "format", "disk4s2"}, "disk4s2"},
        {{"ops", "plan", "add-volume", "disk4", "Scratch"}, "disk4"},
        {{"ops", "run", "prepareFormat", "disk4"}, "Prepare Formatting"},
    };
    for (const auto& [words, named] : cases) EXPECT_TRUE(clitest::failsWith(velmora(words), 2, named));
}

TEST_F(OpsCommand, PreflightShowsEveryCheckAndWhoHoldsFilesByProcess) {
    const auto outcome = velmora({"ops", "preflight", "unmount", "/Volumes/Elements"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("3 open file(s) by Finder, zsh. Quit them first; force-unmount is never used."));
    EXPECT_THAT(lineWith(outcome.out, "pid 412"), AllOf(HasSubstr("Finder"), HasSubstr("2 files")));
    EXPECT_THAT(outcome.out, HasSubstr("/Volumes/Elements/Photos/2026/IMG_0412.HEIC"));
    EXPECT_THAT(log().at("entries"), IsEmpty());  // a preflight alone is no attempt
}

TEST_F(OpsCommand, RunAsksAndWithoutATerminalNeedsYesThenLogsTheOutcome) {
    EXPECT_THAT(velmora({"ops", "run", "unmount", "/Volumes/Projects"}).err, HasSubstr("--yes"));
    EXPECT_TRUE(
        clitest::failsWith(velmora({"ops", "run", "unmount", "/Volumes/Elements", "--yes"}), 1, "nothing was changed"));
    EXPECT_THAT(log().at("entries"), IsEmpty());

    const auto done = velmora({"ops", "run", "unmount", "/Volumes/Projects", "--yes"});
    ASSERT_EQ(done.status, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("Projects"));
    EXPECT_TRUE(
        clitest::failsWith(velmora({"ops", "run", "verifyVolume", "disk4s2", "--yes"}), 1, "Verify did not complete"));

    const auto entries = log().at("entries");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries.at(0).at("operation"), "verifyVolume");  // newest first
    EXPECT_EQ(entries.at(0).at("succeeded"), false);
    EXPECT_EQ(entries.at(1).at("target"), "Volume disk5s1 (Projects)");
    EXPECT_EQ(entries.at(1).at("succeeded"), true);
    EXPECT_EQ(Json::parse(velmora({"--json", "ops", "log", "--limit", "1"}).out).at("entries").size(), 1u);
    EXPECT_EQ(velmora({"ops", "log", "--limit", "0"}).status, 2);
}

TEST_F(OpsCommand, ACorruptLogReadsAsEmptyAndTheNextAttemptReplacesIt) {
    std::ofstream(data_.path("operations-audit.json")) << "[{\"id\": ";
    const auto shown = velmora({"ops", "log"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_THAT(shown.err, HasSubstr("warning"));
    ASSERT_EQ(velmora({"ops", "run", "mount", "disk4", "--yes"}).status, 0);
    EXPECT_EQ(log().at("entries").size(), 1u);
}

TEST_F(OpsCommand, AFailedLogWriteComesAfterTheOutcome) {
    std::filesystem::create_directory(data_.path("operations-audit.json"));  // a folder where the file goes
    const auto outcome = velmora({"ops", "run", "unmount", "/Volumes/Projects", "--yes"});
    EXPECT_THAT(outcome.out, HasSubstr("Projects"));
    EXPECT_TRUE(clitest::failsWith(outcome, 1, "could not be written to the audit log"));
}

TEST_F(OpsCommand, PlansArePrintedNeverRun) {
    const auto format = velmora({"ops", "plan", "format", "disk4", "--name", "Fresh"});
    ASSERT_EQ(format.status, 0) << format.err;
    EXPECT_THAT(format.out, AllOf(HasSubstr("diskutil eraseDisk APFS \"Fresh\" GPT disk4"), HasSubstr("Elements")));
    const auto internal = Json::parse(velmora({"--json", "ops", "plan", "format", "disk0"}).out);
    EXPECT_THAT(internal.at("blockers").dump(), HasSubstr("permanently blocked"));
    EXPECT_FALSE(internal.contains("commandForReview") && !internal.at("commandForReview").is_null());
    EXPECT_THAT(log().at("entries"), IsEmpty());
}

}  // namespace
}  // namespace corvel::cli
