// `velmora classify` end to end: the catalogue of the machine looked at, the JSON shape, and
// one clear error for a path that is not there.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gtest/gtest.h>

namespace corvel {
namespace {

class ClassifyCommand : public ::testing::Test {
protected:
    // A recorded Mac whose home is /Users/me: nothing of it exists on this machine.
    std::string recordedMac() const {
        box_.write("mac/machine.json", R"({"name": "a Mac", "platform": "macos",
            "capturedAt": "2026-11-02T09:30:00Z", "home": "/Users/me", "commands": [], "volumes": []})");
        return box_.path("mac");
    }
    clitest::Outcome run(const std::vector<std::string>& arguments) const {
        return box_.run(arguments, {"HOME=/nowhere"});
    }
    clitest::Sandbox box_;
};

TEST_F(ClassifyCommand, ReplayUsesTheRecordedHomeAndPlatform) {
    const auto document = box_.json({"--replay", recordedMac(), "classify", "/Users/me/Library/Caches/com.apple.Safari",
                                     "/Users/me/.cache/pip", "/Users/me/Library/Caches/Homebrew"});
    ASSERT_EQ(document.size(), 3u);
    EXPECT_EQ(document[0]["classification"]["application"], "Safari");
    // A Mac's catalogue does not know the Linux cache folder.
    EXPECT_EQ(document[1]["classification"]["category"], "Other");
    EXPECT_EQ(document[2]["classification"]["hint"], "brew cleanup");
}

TEST_F(ClassifyCommand, LiveLinuxPathsTakeTheirTypeFromTheFileSystem) {
    box_.folder.makeFolder("home/.cache/pip");
    box_.write("home/src/node_modules", "a file named like the folder");
    const auto document = box_.json({"classify", box_.path("home/.cache/pip") + "/", box_.path("home/src/node_modules"),
                                     "--project-root", box_.path("home/src")});
    ASSERT_EQ(document.size(), 2u);
    EXPECT_EQ(document[0]["path"], box_.path("home/.cache/pip"));  // trailing "/" dropped
    EXPECT_EQ(document[0]["isDirectory"], true);
    EXPECT_EQ(document[1]["isDirectory"], false);
    EXPECT_EQ(document[1]["classification"]["rationale"],
              "Project source under " + box_.path("home/src") + ". Never removed based on size.");
}

TEST_F(ClassifyCommand, HumanOutputShowsEveryPartOfTheVerdict) {
    const auto outcome = run({"--replay", recordedMac(), "classify", "/Users/me/Library/Caches/Homebrew", "/Users/me"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out,
              "/Users/me/Library/Caches/Homebrew/\n"
              "  category   Caches\n"
              "  risk       Low risk (green)\n"
              "  owner      Homebrew\n"
              "  rationale  Application cache. Apps rebuild caches when needed; quit the app before cleaning.\n"
              "  hint       brew cleanup\n"
              "\n"
              "/Users/me/\n"
              "  category   Personal Data\n"
              "  risk       Protected (red)\n"
              "  owner      unknown\n"
              "  rationale  Home folder.\n");
}

TEST_F(ClassifyCommand, AMissingPathIsOneErrorLineAndNoOutput) {
    const auto missing = box_.path("no-such-thing");
    const auto outcome = run({"classify", "/tmp", missing});
    EXPECT_TRUE(clitest::failsWith(outcome, 2, "velmora: '" + missing + "': no such file or folder"));
    EXPECT_EQ(outcome.out, "");

    const auto forced = run({"--json", "classify", "--as-file", missing});
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_EQ(Json::parse(forced.out)[0]["isDirectory"], false);
    EXPECT_EQ(run({"classify", "--as-file", "--as-directory", "/tmp"}).status, 2);
    EXPECT_EQ(run({"classify"}).status, 2);
}

}  // namespace
}  // namespace corvel
