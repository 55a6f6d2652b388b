// `velmora classify` end to end: the catalogue of the machine looked at, the JSON shape, and
// one clear error for a path that is not there.
#include "common/Json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs velmora through the shell with `environment` assignments in front (e.g. "HOME=/home/me").
Outcome velmora(const std::string& environment, const std::string& arguments) {
    const auto errFile = std::filesystem::temp_directory_path() /
                         ("classify-test-" + std::to_string(::getpid()) + ".err");
    const std::string command = "env NO_COLOR=1 " + environment + " " + std::string(CORVEL_VELMORA_BINARY) + " " +
                                arguments + " 2>" + errFile.string();
    Outcome outcome;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return outcome;
    std::array<char, 4096> buffer{};
    std::size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) outcome.out.append(buffer.data(), got);
    const int raw = ::pclose(pipe);
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::ifstream err(errFile);
    outcome.err.assign(std::istreambuf_iterator<char>(err), {});
    std::filesystem::remove(errFile);
    return outcome;
}

class ClassifyCommand : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() /
                  ("classify-command-" + std::to_string(::getpid()) + "-" +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    // A recorded Mac whose home is /Users/me: nothing of it exists on this machine.
    std::string recordedMac() {
        const auto dir = folder_ / "mac";
        std::filesystem::create_directories(dir);
        std::ofstream(dir / "machine.json") << R"({"name": "a Mac", "platform": "macos",
            "capturedAt": "2026-11-02T09:30:00Z", "home": "/Users/me", "commands": [], "volumes": []})";
        return dir.string();
    }

    std::filesystem::path folder_;
};

}  // namespace

TEST_F(ClassifyCommand, ReplayUsesTheRecordedHomeAndPlatform) {
    const auto outcome = velmora("HOME=/nowhere", "--replay " + recordedMac() +
                                                      " --json classify /Users/me/Library/Caches/com.apple.Safari "
                                                      "/Users/me/.cache/pip /Users/me/Library/Caches/Homebrew");
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
    const auto home = folder_ / "home";
    std::filesystem::create_directories(home / ".cache" / "pip");
    std::filesystem::create_directories(home / "src" / "app" / "node_modules");
    std::ofstream(home / "src" / "node_modules") << "a file named like the folder";
    const auto outcome =
        velmora("HOME=" + home.string(), "--json classify " + (home / ".cache/pip/").string() + " " +
                                             (home / "src/app/node_modules").string() + " " +
                                             (home / "src/node_modules").string() + " --project-root " +
                                             (home / "src").string());
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
        velmora("HOME=/nowhere", "--replay " + recordedMac() + " classify /Users/me/Library/Caches/Homebrew /Users/me");
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
    const auto missing = (folder_ / "no-such-thing").string();
    const auto outcome = velmora("HOME=/nowhere", "classify /tmp " + missing);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.rfind("velmora: '" + missing + "': no such file or folder", 0), 0u) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);

    const auto forced = velmora("HOME=/nowhere", "--json classify --as-file " + missing);
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_EQ(corvel::Json::parse(forced.out)[0]["isDirectory"], false);

    EXPECT_EQ(velmora("", "classify --as-file --as-directory /tmp").status, 2);
    EXPECT_EQ(velmora("", "classify").status, 2);
}
