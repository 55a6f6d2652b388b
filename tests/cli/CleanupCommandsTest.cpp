// `velmora cleanup`, driven through the real binary on a temporary home: the simulation's output,
// its history, and the ways bad input and a broken history are reported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <utime.h>

#include <filesystem>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::Outcome;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class CleanupCommands : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("data");
        folder_.write("home/.cache/tool/blob", std::string(64'000, 'b'));
        folder_.write("home/Downloads/movie.iso", std::string(8'000, 'm'));
    }

    std::string path(const std::string& relative) const { return folder_.path(relative); }

    Outcome velmora(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", path("data")});
        return clitest::velmora(arguments, {"HOME=" + path("home"), "NO_COLOR=1"});
    }

    clitest::TemporaryFolder folder_;
};

TEST_F(CleanupCommands, ASimulationSaysWhatItIsListsBothSidesAndIsSaved) {
    const auto outcome =
        velmora({"cleanup", "simulate", path("home/.cache/tool"), path("home/Downloads"), path("home/nowhere")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Cleanup SIMULATION: nothing was deleted, moved or changed."));
    EXPECT_THAT(clitest::lineWith(outcome.out, "not simulated"),
                AllOf(HasSubstr(path("home/nowhere")), HasSubstr("no such file or folder")));
    EXPECT_THAT(outcome.out, HasSubstr("Eligible (1)"));
    EXPECT_THAT(clitest::lineWith(outcome.out, path("home/.cache/tool")), HasSubstr("Low risk"));
    EXPECT_THAT(outcome.out, HasSubstr("Classified GRAY: Origin or impact unknown. Never offered for cleanup."));
    EXPECT_THAT(outcome.out, HasSubstr("Simulation only: no file was modified."));
    EXPECT_THAT(clitest::lineWith(outcome.out, "For your review only (velmora runs none of it): "),
                AllOf(HasSubstr("rm -r -- '" + path("home/.cache/tool") + "'"), Not(HasSubstr("Downloads"))));
    EXPECT_TRUE(std::filesystem::exists(path("home/.cache/tool/blob")));

    const auto history = velmora({"cleanup", "history", "--json"});
    ASSERT_EQ(history.status, 0) << history.err;
    const Json saved = Json::parse(history.out);
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0]["mode"], "simulation");
    EXPECT_EQ(saved[0]["eligible"][0]["path"], path("home/.cache/tool"));

    const std::string id = saved[0]["id"];
    const auto shown = velmora({"cleanup", "show", id.substr(0, 8)});
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, AllOf(StartsWith("Cleanup SIMULATION"), HasSubstr(id), HasSubstr("Eligible (1)")));
    const auto listed = velmora({"cleanup", "history"});
    EXPECT_THAT(clitest::lineWith(listed.out, id.substr(0, 8)), HasSubstr(" 1 "));
}

TEST_F(CleanupCommands, JsonIsTheSimulationAlone) {
    const auto outcome = velmora({"cleanup", "simulate", "--json", path("home/.cache/tool")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json simulation = Json::parse(outcome.out);
    EXPECT_EQ(simulation["mode"], "simulation");
    EXPECT_EQ(simulation["eligible"].size(), 1u);
    EXPECT_EQ(simulation["checks"][0], "Simulation only: no file was modified.");
}

TEST_F(CleanupCommands, BadInputIsOneLineAndABrokenHistoryDoesNotHideTheSimulation) {
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    };
    const std::vector<Case> cases{
        {{"cleanup", "simulate", path("a"), path("b")}, 1, "nothing to simulate: " + path("a")},
        {{"cleanup", "suggest", "--older-than", "soon", path("home")}, 2, "'soon' is not an age"},
        {{"cleanup", "suggest", path("home/.cache/tool/blob")}, 2, "not a folder"},
        {{"cleanup", "show", "ABCD1234"}, 2, "ABCD1234"},
    };
    for (const auto& test : cases) {
        const auto outcome = velmora(test.arguments);
        EXPECT_EQ(outcome.status, test.status) << test.message;
        EXPECT_THAT(outcome.err, AllOf(HasSubstr(test.message), Not(HasSubstr("\n\n")))) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }

    folder_.write("data/cleanup-simulations.json", "[{\"id\": ");
    const auto corrupt = velmora({"cleanup", "simulate", path("home/.cache/tool")});
    EXPECT_EQ(corrupt.status, 0);
    EXPECT_THAT(corrupt.out, HasSubstr("Eligible (1)"));
    EXPECT_THAT(corrupt.err, HasSubstr("cleanup-simulations.json"));
    EXPECT_EQ(Json::parse(velmora({"cleanup", "history", "--json"}).out).size(), 1u);  // replaced

    std::filesystem::remove(path("data/cleanup-simulations.json"));
    folder_.makeFolder("data/cleanup-simulations.json");
    const auto folder = velmora({"cleanup", "simulate", path("home/.cache/tool")});
    EXPECT_EQ(folder.status, 0);
    EXPECT_THAT(folder.out, HasSubstr("Eligible (1)"));
    EXPECT_THAT(folder.err, HasSubstr("could not save the simulation"));
    EXPECT_EQ(std::count(folder.err.begin(), folder.err.end(), '\n'), 1) << folder.err;
}

TEST_F(CleanupCommands, SuggestProposesOnlyWhatWasLeftAloneAndSaysWhy) {
    folder_.write("home/.cache/fresh/blob", std::string(32'000, 'f'));
    const utimbuf old{1'600'000'000, 1'600'000'000};
    for (const char* relative : {"home/.cache/tool/blob", "home/.cache/tool", "home/Downloads/movie.iso"})
        ASSERT_EQ(::utime(path(relative).c_str(), &old), 0);
    const auto outcome = velmora({"cleanup", "suggest", "--older-than", "30d"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Cleanup SIMULATION"));
    EXPECT_THAT(clitest::lineWith(outcome.out, path("home/.cache/tool")), HasSubstr("untouched for"));
    EXPECT_THAT(outcome.out, Not(HasSubstr(path("home/.cache/fresh"))));
    EXPECT_THAT(outcome.out, Not(HasSubstr(path("home/Downloads"))));
    EXPECT_THAT(outcome.out, HasSubstr("For your review only"));
}

}  // namespace
}  // namespace corvel
