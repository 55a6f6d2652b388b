#include "command/CommandError.h"
#include "command/RecordedCommandRunner.h"
#include "common/AtomicFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using namespace corvel;
namespace fs = std::filesystem;

namespace {
class RecordedCommandRunnerTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("velmora-recording-" + std::to_string(::getpid()) + "-" +
                                              ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }
    void write(const std::string& name, const std::string& text) { AtomicFile::write(folder / name, text); }
    std::string loadError() {
        try {
            RecordedCommandRunner::load(folder);
        } catch (const RecordingError& error) {
            return error.what();
        }
        ADD_FAILURE() << "the recording loaded";
        return {};
    }
    fs::path folder;
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
    auto runner = RecordedCommandRunner::load(folder);
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
    EXPECT_NE(loadError().find("machine.json"), std::string::npos);  // missing

    write("machine.json", "{ not json");
    auto message = loadError();
    EXPECT_NE(message.find("machine.json"), std::string::npos) << message;
    EXPECT_NE(message.find("not valid JSON"), std::string::npos) << message;

    write("machine.json", R"({"commands": [{"arguments": []}]})");
    message = loadError();
    EXPECT_NE(message.find("'executable'"), std::string::npos) << message;

    write("machine.json", R"({"commands": [{"executable": "/x", "stdout": "gone.txt"}]})");
    message = loadError();
    EXPECT_NE(message.find("gone.txt"), std::string::npos) << message;
}
