// Drives the real velmora binary as a person would, checking exit codes and the one-line errors.
#include "cli/VelmoraProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvel {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// Runs velmora with stdout and stderr together, as a terminal shows them.
clitest::Outcome velmora(const std::vector<std::string>& arguments) {
    return clitest::velmora(arguments, {}, clitest::Streams::merged);
}

TEST(CommandLine, VersionAndHelp) {
    const auto version = velmora({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, std::string("velmora ") + VELMORA_VERSION + "\n");

    // "velmora help" is the overview (not the help of "help"); a command's help names the program.
    for (const auto& words : std::vector<std::vector<std::string>>{{"--help"}, {"help"}}) {
        const auto overview = velmora(words);
        EXPECT_EQ(overview.status, 0);
        EXPECT_THAT(overview.out, HasSubstr("Usage: velmora [OPTIONS] [SUBCOMMAND]"));
        EXPECT_THAT(overview.out, HasSubstr("--replay DIR"));
    }
    EXPECT_THAT(velmora({"help", "scan"}).out, HasSubstr("Usage: velmora scan"));
    EXPECT_EQ(velmora({"help", "help"}).status, 2);
}

TEST(CommandLine, BadUsageIsOneLineAndExitTwo) {
    const std::vector<std::vector<std::string>> badUsages{
        {"no-such-command"}, {"--no-such-option"}, {"help", "no-such-command"}};
    for (const auto& arguments : badUsages) {
        auto outcome = velmora(arguments);
        EXPECT_THAT(outcome.out, StartsWith("velmora: "));
        outcome.err = outcome.out;
        EXPECT_TRUE(clitest::failsWith(outcome, 2, arguments.back()));
    }
    EXPECT_THAT(velmora({"frobnicate"}).out, HasSubstr("unknown command 'frobnicate'"));
}

}  // namespace
}  // namespace corvel
