// `velmora cleanup`, driven through the real binary on a temporary home: the simulation's output,
// its history, and the ways bad input and a broken history are reported.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utime.h>

#include <filesystem>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::failsWith;
using clitest::lineWith;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class CleanupCommands : public ::testing::Test {
protected:
    void SetUp() override {
        box_.write("home/.cache/tool/blob", std::string(64'000, 'b'));
        box_.write("home/Downloads/movie.iso", std::string(8'000, 'm'));
    }
    std::string path(const std::string& relative) const { return box_.path(relative); }

    clitest::Sandbox box_;
};

TEST_F(CleanupCommands, ASimulationSaysWhatItIsListsBothSidesAndIsSaved) {
    const auto outcome =
        box_.run({"cleanup", "simulate", path("home/.cache/tool"), path("home/Downloads"), path("home/nowhere")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Cleanup SIMULATION: nothing was deleted, moved or changed."));
    EXPECT_THAT(lineWith(outcome.out, "not simulated"),
                AllOf(HasSubstr(path("home/nowhere")), HasSubstr("no such file or folder")));
    EXPECT_THAT(lineWith(outcome.out, path("home/.cache/tool")), HasSubstr("Low risk"));
    EXPECT_THAT(outcome.out, HasSubstr("Classified GRAY: Origin or impact unknown. Never offered for cleanup."));
    EXPECT_THAT(lineWith(outcome.out, "For your review only (velmora runs none of it): "),
                AllOf(HasSubstr("rm -r -- '" + path("home/.cache/tool") + "'"), Not(HasSubstr("Downloads"))));
    EXPECT_TRUE(std::filesystem::exists(path("home/.cache/tool/blob")));

    const Json saved = box_.json({"cleanup", "history"});
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0]["mode"], "simulation");
    EXPECT_EQ(saved[0]["eligible"][0]["path"], path("home/.cache/tool"));

    const std::string id = saved[0]["id"];
    const auto shown = box_.run({"cleanup", "show", id.substr(0, 8)});
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, AllOf(StartsWith("Cleanup SIMULATION"), HasSubstr(id), HasSubstr("Eligible (1)")));
    EXPECT_THAT(lineWith(box_.run({"cleanup", "history"}).out, id.substr(0, 8)), HasSubstr(" 1 "));
    EXPECT_EQ(box_.json({"cleanup", "simulate", path("home/.cache/tool")})["eligible"].size(), 1u);
}

TEST_F(CleanupCommands, BadInputIsOneLineAndABrokenHistoryDoesNotHideTheSimulation) {
    const std::vector<std::tuple<std::vector<std::string>, int, std::string>> cases{
        {{"cleanup", "simulate", path("a"), path("b")}, 1, "nothing to simulate: " + path("a")},
        {{"cleanup", "suggest", "--older-than", "soon", path("home")}, 2, "'soon' is not an age"},
        {{"cleanup", "suggest", path("home/.cache/tool/blob")}, 2, "not a folder"},
        {{"cleanup", "show", "ABCD1234"}, 2, "ABCD1234"},
    };
    for (const auto& [arguments, status, message] : cases) EXPECT_TRUE(failsWith(box_.run(arguments), status, message));

    box_.write("data/cleanup-simulations.json", "[{\"id\": ");
    const auto corrupt = box_.run({"cleanup", "simulate", path("home/.cache/tool")});
    EXPECT_EQ(corrupt.status, 0);
    EXPECT_THAT(corrupt.out, HasSubstr("Eligible (1)"));
    EXPECT_THAT(corrupt.err, HasSubstr("cleanup-simulations.json"));
    EXPECT_EQ(box_.json({"cleanup", "history"}).size(), 1u);  // replaced

    std::filesystem::remove(path("data/cleanup-simulations.json"));
    box_.folder.makeFolder("data/cleanup-simulations.json");
    const auto folder = box_.run({"cleanup", "simulate", path("home/.cache/tool")});
    EXPECT_THAT(folder.out, HasSubstr("Eligible (1)"));
    EXPECT_TRUE(failsWith(folder, 0, "could not save the simulation"));
}

TEST_F(CleanupCommands, SuggestProposesOnlyWhatWasLeftAloneAndSaysWhy) {
    box_.write("home/.cache/fresh/blob", std::string(32'000, 'f'));
    const utimbuf old{1'600'000'000, 1'600'000'000};
    for (const char* relative : {"home/.cache/tool/blob", "home/.cache/tool", "home/Downloads/movie.iso"})
        ASSERT_EQ(::utime(path(relative).c_str(), &old), 0);
    const auto outcome = box_.run({"cleanup", "suggest", "--older-than", "30d"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Cleanup SIMULATION"));
    EXPECT_THAT(lineWith(outcome.out, path("home/.cache/tool")), HasSubstr("untouched for"));
    EXPECT_THAT(outcome.out, AllOf(Not(HasSubstr(path("home/.cache/fresh"))), Not(HasSubstr(path("home/Downloads")))));
}

}  // namespace
}  // namespace corvel
