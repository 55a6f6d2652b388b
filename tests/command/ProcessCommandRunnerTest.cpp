// Runs real child processes through /bin/sh scripts: these are the behaviours discovery relies on.
#include "command/CommandError.h"
#include "command/ProcessCommandRunner.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace corvel;

namespace {

std::string runShell(double timeout, const std::string& script) {
    ProcessCommandRunner runner(timeout);
    return runner.run("/bin/sh", {"-c", script});
}

CommandError failureOf(double timeout, const std::string& script) {
    try {
        runShell(timeout, script);
    } catch (const CommandError& error) {
        return error;
    }
    ADD_FAILURE() << "the script did not fail: " << script;
    return CommandError::launchFailed("did not fail");
}

}  // namespace

TEST(ProcessCommandRunner, ReturnsStandardOutputUntouched) {
    EXPECT_EQ(runShell(10, "printf '  a\\nb  \\n'"), "  a\nb  \n");
    ProcessCommandRunner runner(10);
    // Arguments reach the program as given: no shell, no splitting, no expansion.
    EXPECT_EQ(runner.run("/bin/echo", {"two words", "$HOME", "*"}), "two words $HOME *\n");
}

TEST(ProcessCommandRunner, RunsWithCLocaleAndNoInput) {
    EXPECT_EQ(runShell(10, "echo $LC_ALL"), "C\n");
    // A tool that reads its input sees end-of-file at once instead of waiting for a person.
    EXPECT_EQ(runShell(10, "cat; echo done"), "done\n");
}

TEST(ProcessCommandRunner, NonZeroExitCarriesStatusAndMessage) {
    const auto fromStandardError = failureOf(10, "echo out; echo '  bad disk  ' >&2; exit 3");
    EXPECT_EQ(fromStandardError, CommandError::failed(3, "bad disk"));
    EXPECT_EQ(fromStandardError.description(), "Command failed (3): bad disk");

    // With nothing on standard error, the message is the output line without its line end.
    const auto fromStandardOutput = failureOf(10, "echo 'Could not find disk: disk9'; exit 1");
    EXPECT_EQ(fromStandardOutput.description(), "Command failed (1): Could not find disk: disk9");

    // Undecodable bytes give an empty message rather than garbage.
    EXPECT_EQ(failureOf(10, "printf '\\377\\376' >&2; exit 2"), CommandError::failed(2, ""));
}

TEST(ProcessCommandRunner, TimeOutStopsASleepingTool) {
    const auto started = std::chrono::steady_clock::now();
    const auto error = failureOf(0.5, "sleep 30");
    const auto elapsed = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(error, CommandError::timedOut());
    EXPECT_EQ(error.description(), "Command timed out");
    EXPECT_LT(elapsed, std::chrono::seconds(10));  // bounded, not waiting for the sleep to finish
}

TEST(ProcessCommandRunner, TimeOutWinsEvenWhenTheToolThenExitsCleanly) {
    // The tool catches the terminate request and exits 0; it still timed out.
    EXPECT_EQ(failureOf(0.5, "trap 'exit 0' TERM; sleep 30 & wait"), CommandError::timedOut());
}

TEST(ProcessCommandRunner, MissingExecutableFailsToLaunch) {
    ProcessCommandRunner runner(10);
    try {
        runner.run("/nonexistent/velmora-tool", {});
        FAIL() << "launched a missing program";
    } catch (const CommandError& error) {
        EXPECT_EQ(error.kind(), CommandError::Kind::launchFailed);
        EXPECT_EQ(error.description(), "Could not launch command: No such file or directory");
    }
}

TEST(ProcessCommandRunner, MegabytesOnBothPipesDoNotDeadlock) {
    // 8 MB to standard error first: a runner that drained only standard output would block here.
    const auto output = runShell(60,
                                 "head -c 8000000 /dev/zero | tr '\\0' e >&2; "
                                 "head -c 6000000 /dev/zero | tr '\\0' o");
    EXPECT_EQ(output.size(), 6000000u);
    EXPECT_EQ(output.find_first_not_of('o'), std::string::npos);

    const auto error =
        failureOf(60, "head -c 5000000 /dev/zero | tr '\\0' x; head -c 3000000 /dev/zero | tr '\\0' y >&2; exit 4");
    EXPECT_EQ(error.status(), 4);
    EXPECT_EQ(error.text().size(), 3000000u);  // standard error wins over the larger output
}
