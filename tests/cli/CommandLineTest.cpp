// Drives the real velmora binary as a person would, checking exit codes and the one-line errors.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace {

struct Outcome {
    int status = -1;
    std::string out;
};

// Runs velmora with `arguments` (already shell-quoted), capturing stdout and stderr together.
Outcome velmora(const std::string& arguments) {
    const std::string command = std::string(CORVEL_VELMORA_BINARY) + " " + arguments + " 2>&1";
    Outcome outcome;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return outcome;
    std::array<char, 4096> buffer{};
    std::size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) outcome.out.append(buffer.data(), got);
    const int raw = ::pclose(pipe);
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return outcome;
}

}  // namespace

TEST(CommandLine, VersionAndHelp) {
    const auto version = velmora("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, std::string("velmora ") + VELMORA_VERSION + "\n");

    const auto help = velmora("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("--replay DIR"), std::string::npos);
    EXPECT_NE(help.out.find("help"), std::string::npos);

    const auto helpHelp = velmora("help help");
    EXPECT_EQ(helpHelp.status, 2);
}

TEST(CommandLine, BadUsageIsOneLineAndExitTwo) {
    for (const char* arguments : {"no-such-command", "--no-such-option", "help no-such-command"}) {
        const auto outcome = velmora(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_EQ(outcome.out.rfind("velmora: ", 0), 0u) << outcome.out;
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    }
    EXPECT_NE(velmora("frobnicate").out.find("unknown command 'frobnicate'"), std::string::npos);
}
