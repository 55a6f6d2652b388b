// Drives the real velmora binary as a person would, checking exit codes and the one-line errors.
#include "cli/VelmoraProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using corvel::clitest::Streams;

// Runs velmora with stdout and stderr together, as a terminal shows them.
corvel::clitest::Outcome velmora(const std::vector<std::string>& arguments) {
    return corvel::clitest::velmora(arguments, {}, Streams::merged);
}

}  // namespace

TEST(CommandLine, VersionAndHelp) {
    const auto version = velmora({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, std::string("velmora ") + VELMORA_VERSION + "\n");

    const auto help = velmora({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--replay DIR"), std::string::npos);
    EXPECT_NE(help.out.find("help"), std::string::npos);

    const auto helpHelp = velmora({"help", "help"});
    EXPECT_EQ(helpHelp.status, 2);

    // "velmora help" is the overview (not the help of "help"); a command's help names the program.
    const auto overview = velmora({"help"});
    EXPECT_EQ(overview.status, 0);
    EXPECT_THAT(overview.out, ::testing::HasSubstr("Usage: velmora [OPTIONS] [SUBCOMMAND]"));
    EXPECT_THAT(overview.out, ::testing::HasSubstr("--replay DIR"));
    EXPECT_THAT(velmora({"help", "scan"}).out, ::testing::HasSubstr("Usage: velmora scan"));
}

TEST(CommandLine, BadUsageIsOneLineAndExitTwo) {
    const std::vector<std::vector<std::string>> badUsages{
        {"no-such-command"}, {"--no-such-option"}, {"help", "no-such-command"}};
    for (const auto& arguments : badUsages) {
        const auto outcome = velmora(arguments);
        EXPECT_EQ(outcome.status, 2) << ::testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out.rfind("velmora: ", 0), 0u) << outcome.out;
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    }
    EXPECT_NE(velmora({"frobnicate"}).out.find("unknown command 'frobnicate'"), std::string::npos);
}
