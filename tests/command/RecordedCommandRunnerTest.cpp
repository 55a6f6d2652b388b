#include "command/CommandError.h"
#include "command/RecordedCommandRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using ::testing::HasSubstr;

namespace {
class RecordedCommandRunnerTest : public ::testing::Test {
protected:
    void write(const std::string& name, const std::string& text) { folder.write(name, text); }
    std::string loadError() {
        try {
            RecordedCommandRunner::load(folder.root());
        } catch (const RecordingError& error) {
            return error.what();
        }
        ADD_FAILURE() << "the recording loaded";
        return {};
    }
    corvel::testing::TemporaryFolder folder;
};

CommandError errorOf(RecordedCommandRunner& runner, const std::string& exe, const std::vector<std::string>& args) {
    try {
        runner.run(exe, args);
    } catch (const CommandError& error) {
        return error;
    }
    ADD_FAILURE() << "the command succeeded";
    return CommandError::launchFailed("none");
}
}  // namespace

TEST_F(RecordedCommandRunnerTest, ReplaysEveryRecordedOutcome) {
    write("list.plist", "<plist/>");
    write("machine.json", R"({
      "name": "test", "capturedAt": "2026-11-02T09:30:00Z",
      "commands": [
        {"executable": "/usr/sbin/diskutil", "arguments": ["list", "-plist", "physical"], "stdout": "list.plist"},
        {"executable": "/usr/sbin/diskutil", "arguments": ["info", "-plist", "disk4"], "status": 1, "stderr": "Could not find disk: disk4"},
        {"executable": "/usr/sbin/diskutil", "arguments": ["info", "-plist", "disk5"], "timedOut": true},
        {"executable": "/usr/bin/docker", "arguments": ["info"], "launchError": "No such file or directory"}
      ]})");
    auto runner = RecordedCommandRunner::load(folder.root());
    EXPECT_EQ(runner.run("/usr/sbin/diskutil", {"list", "-plist", "physical"}), "<plist/>");
    EXPECT_EQ(errorOf(runner, "/usr/sbin/diskutil", {"info", "-plist", "disk4"}),
              CommandError::failed(1, "Could not find disk: disk4"));
    EXPECT_EQ(errorOf(runner, "/usr/sbin/diskutil", {"info", "-plist", "disk5"}), CommandError::timedOut());
    EXPECT_EQ(errorOf(runner, "/usr/bin/docker", {"info"}), CommandError::launchFailed("No such file or directory"));
    // Matching is exact: other arguments were never recorded.
    EXPECT_EQ(errorOf(runner, "/usr/sbin/diskutil", {"list", "-plist"}), CommandError::launchFailed("no recording"));
    EXPECT_TRUE(runner.hasExecutable("/usr/bin/docker"));
    EXPECT_FALSE(runner.hasExecutable("/usr/bin/lsof"));
}

TEST_F(RecordedCommandRunnerTest, BadRecordingsNameTheFile) {
    EXPECT_THAT(loadError(), HasSubstr("machine.json"));  // missing
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"{ not json", {"machine.json", "not valid JSON"}},
        {R"({"commands": [{"arguments": []}]})", {"'executable'"}},
        {R"({"commands": [{"executable": "/x", "stdout": "gone.txt"}]})", {"gone.txt"}},
    };
    for (const auto& [text, named] : cases) {
        write("machine.json", text);
        const auto message = loadError();
        for (const auto& each : named) EXPECT_THAT(message, HasSubstr(each)) << text;
    }
}
