// `velmora classify` end to end: the catalogue of the machine looked at, the JSON shape, and
// one clear error for a path that is not there.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using corvel::clitest::velmora;

class ClassifyCommand : public ::testing::Test {
protected:
    // A recorded Mac whose home is /Users/me: nothing of it exists on this machine.
    std::string recordedMac() {
        const auto dir = folder_.root() / "mac";
        std::filesystem::create_directories(dir);
        std::ofstream(dir / "machine.json") << R"({"name": "a Mac", "platform": "macos",
            "capturedAt": "2026-11-02T09:30:00Z", "home": "/Users/me", "commands": [], "volumes": []})";
        return dir.string();
    }

    corvel::clitest::TemporaryFolder folder_;
};

}  // namespace

TEST_F(ClassifyCommand, ReplayUsesTheRecordedHomeAndPlatform) {
    const auto outcome =
        velmora({"--replay", recordedMac(), "--json", "classify", "/Users/me/Library/Caches/com.apple.Safari",
                 "/Users/me/.cache/pip", "/Users/me/Library/Caches/Homebrew"},
                {"NO_COLOR=1", "HOME=/nowhere"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto document = corvel::Json::parse(outcome.out);
    ASSERT_EQ(document.size(), 3u);
    EXPECT_EQ(document[0].dump(),
              R"({"path":"/Users/me/Library/Caches/com.apple.Safari","isDirectory":true,"classification":)"
              R"({"category":"Caches","risk":"green","application":"Safari","rationale":"Application cache. Apps )"
              R"(rebuild caches when needed; quit the app before cleaning."}})");
    // A Mac's catalogue does not know the Linux cache folder.
    EXPECT_EQ(document[1]["classification"]["category"], "Other");
    EXPECT_EQ(document[2]["classification"]["hint"], "brew cleanup");
}

TEST_F(ClassifyCommand, LiveLinuxPathsTakeTheirTypeFromTheFileSystem) {
    const auto home = folder_.root() / "home";
    std::filesystem::create_directories(home / ".cache" / "pip");
    std::filesystem::create_directories(home / "src" / "app" / "node_modules");
    std::ofstream(home / "src" / "node_modules") << "a file named like the folder";
    const auto outcome =
        velmora({"--json", "classify", (home / ".cache/pip/").string(), (home / "src/app/node_modules").string(),
                 (home / "src/node_modules").string(), "--project-root", (home / "src").string()},
                {"NO_COLOR=1", "HOME=" + home.string()});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto document = corvel::Json::parse(outcome.out);
    ASSERT_EQ(document.size(), 3u);
    EXPECT_EQ(document[0]["path"], (home / ".cache/pip").string());  // trailing "/" dropped
    EXPECT_EQ(document[0]["isDirectory"], true);
    EXPECT_EQ(document[1]["classification"]["category"], "Node Modules");
    EXPECT_EQ(document[2]["isDirectory"], false);
    EXPECT_EQ(document[2]["classification"]["category"], "Projects");
    EXPECT_EQ(document[2]["classification"]["rationale"],
              "Project source under " + (home / "src").string() + ". Never removed based on size.");
}

TEST_F(ClassifyCommand, HumanOutputShowsEveryPartOfTheVerdict) {
    const auto outcome =
        velmora({"--replay", recordedMac(), "classify", "/Users/me/Library/Caches/Homebrew", "/Users/me"},
                {"NO_COLOR=1", "HOME=/nowhere"});
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
    const auto missing = folder_.path("no-such-thing");
    const auto outcome = velmora({"classify", "/tmp", missing}, {"NO_COLOR=1", "HOME=/nowhere"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("velmora: '" + missing + "': no such file or folder", 0), 0u) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);

    const auto forced = velmora({"--json", "classify", "--as-file", missing}, {"NO_COLOR=1", "HOME=/nowhere"});
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_EQ(corvel::Json::parse(forced.out)[0]["isDirectory"], false);

    EXPECT_EQ(velmora({"classify", "--as-file", "--as-directory", "/tmp"}, {"NO_COLOR=1"}).status, 2);
    EXPECT_EQ(velmora({"classify"}, {"NO_COLOR=1"}).status, 2);
}
