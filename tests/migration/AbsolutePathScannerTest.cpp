// The absolute-path scan over a temporary workspace shaped like a real one: a virtual
// environment, a CMake build, a git repository with a worktree, package links and symbolic links
// of every kind. It must find exactly the files a move breaks, and nothing that merely mentions
// the path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

#include "common/PathText.h"
#include "migration/AbsolutePathScanner.h"
#include "support/TemporaryFolder.h"

namespace corvel {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Pair;

class AbsolutePathScannerTest : public ::testing::Test {
protected:
    std::string ws() const { return normalPath(folder_.path("ws")); }
    std::string write(const std::string& relative, const std::string& text) const {
        return folder_.write("ws/" + relative, text);
    }
    void link(const std::string& target, const std::string& relative) const {
        fs::create_directories(fs::path(folder_.path("ws/" + relative)).parent_path());
        fs::create_symlink(target, folder_.path("ws/" + relative));
    }
    AbsolutePathScan scan() const {
        MigrationProgress progress;
        return AbsolutePathScanner::scan(ws(), progress, [] { return false; });
    }
    // (path below the workspace, kind) of every finding, in the scan's order.
    std::vector<std::pair<std::string, BreakKind>> found(const AbsolutePathScan& result) const {
        std::vector<std::pair<std::string, BreakKind>> pairs;
        for (const auto& broken : result.breakingPaths)
            pairs.emplace_back(broken.path.substr(ws().size() + 1), broken.kind);
        return pairs;
    }

    testing::TemporaryFolder folder_;
};

TEST_F(AbsolutePathScannerTest, FindsExactlyTheFilesAndLinksAMoveBreaks) {
    const auto root = ws();
    write("Makefile", "all:\n");
    write("makefile", "all:\n");
    write(".venv/pyvenv.cfg", "home = /usr/bin\ncommand = /usr/bin/python3 -m venv " + root + "/.venv\n");
    write(".venv/bin/activate", "# activate\n\nVIRTUAL_ENV=\"" + root + "/.venv\"\nexport VIRTUAL_ENV\n");
    link("/usr/bin/python3", ".venv/bin/python");
    write(".venv/lib/python3.11/site-packages/extra.pth", root + "/src\n");  // not a kind that is read
    write("build/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + root + "\n");
    write("build/compile_commands.json",
          "[{\"directory\": \"" + root + "/build\",\n\"file\": \"" + root + "/a.c\"}]\n");
    write("other/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + root + "2/src\n");  // a sibling, not us
    write("repo/.git/HEAD", "ref: refs/heads/main\n");
    write("repo/.git/worktrees/feature/gitdir", root + "/feature/.git\n");
    write("feature/.git", "gitdir: " + root + "/repo/.git/worktrees/feature\n");
    write("README.md", "Clone into " + root + " and build.\n");
    write(".idea/cache.bin", std::string("\0\1", 2) + root);
    write(".idea/workspace.xml", "<option value=\"$PROJECT_DIR$/src\" />\n");
    ASSERT_EQ(::mkfifo(folder_.path("ws/.vscode-pipe").c_str(), 0600), 0);
    fs::create_directories(folder_.path("ws/.vscode"));
    ASSERT_EQ(::mkfifo(folder_.path("ws/.vscode/settings.json").c_str(), 0600), 0);  // never opened
    link(root + "/repo", "link-absolute");
    link("repo", "link-relative");
    link("/etc", "link-outside");
    link(root + "2", "link-sibling");
    link(root + "/node_modules/tool/cli.js", "node_modules/.bin/tool");

    const auto result = scan();

    EXPECT_THAT(found(result), ElementsAre(Pair(".venv/bin/activate", BreakKind::virtualEnvironment),
                                           Pair(".venv/pyvenv.cfg", BreakKind::virtualEnvironment),
                                           Pair("build/CMakeCache.txt", BreakKind::cmakeCache),
                                           Pair("build/compile_commands.json", BreakKind::compileCommands),
                                           Pair("feature/.git", BreakKind::gitWorktreeLink),
                                           Pair("link-absolute", BreakKind::symbolicLink),
                                           Pair("node_modules/.bin/tool", BreakKind::packageLink),
                                           Pair("repo/.git/worktrees/feature/gitdir", BreakKind::gitWorktreeLink)));
    EXPECT_THAT(result.breakingPaths[0], Field(&BreakingPath::lineNumber, 3));
    EXPECT_THAT(result.breakingPaths[0], Field(&BreakingPath::line, "VIRTUAL_ENV=\"" + root + "/.venv\""));
    EXPECT_THAT(result.breakingPaths[3], Field(&BreakingPath::matchingLines, 2));
    EXPECT_THAT(result.breakingPaths[4].fix, ::testing::HasSubstr("git worktree repair"));
    EXPECT_EQ(result.binaryFilesSkipped, 1);
    EXPECT_THAT(result.caseConflicts, ElementsAre(::testing::AnyOf(root + "/Makefile", root + "/makefile")));
    EXPECT_TRUE(result.hasGitRepository);
    EXPECT_THAT(result.unreadable, ::testing::IsEmpty());
}

TEST_F(AbsolutePathScannerTest, ALineLongerThanOneChunkIsSearchedAcrossTheCut) {
    const auto root = ws();
    // The path straddles the first chunk boundary, on the second line of a file of long lines.
    const auto before = AbsolutePathScanner::chunkBytes - 10;
    write("build/CMakeCache.txt", "first\n" + std::string(before - 6, 'x') + " " + root + "/src " +
                                      std::string(3 * AbsolutePathScanner::chunkBytes, 'y') + "\nlast\n");
    const auto result = scan();
    ASSERT_EQ(result.breakingPaths.size(), 1u);
    EXPECT_EQ(result.breakingPaths[0].lineNumber, 2);
    EXPECT_EQ(result.breakingPaths[0].matchingLines, 1);
    EXPECT_LE(result.breakingPaths[0].line.size(), AbsolutePathScanner::shownLineLimit + 4);
    EXPECT_EQ(result.filesRead, 1);
}

TEST_F(AbsolutePathScannerTest, WithoutAGitRepositoryOrCaseTwinsNothingIsNoted) {
    write("src/a.c", "int a;\n");
    const auto result = scan();
    EXPECT_FALSE(result.hasGitRepository);
    EXPECT_THAT(result.caseConflicts, ::testing::IsEmpty());
    EXPECT_THAT(result.breakingPaths, ::testing::IsEmpty());
}

TEST(AbsolutePathScannerRules, APathIsNamedOnlyAsAWholePath) {
    const std::string source = "/home/me/ws";
    const std::vector<std::pair<std::string, bool>> cases = {
        {"/home/me/ws", true},
        {"x=/home/me/ws/build", true},
        {"\"/home/me/ws\",", true},
        {"/home/me/ws2/build", false},
        {"/home/me/ws.bak", false},
        {"/home/me/w", false},
        {"/home/me/ws-old /home/me/ws:", true},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(AbsolutePathScanner::namesPath(line, source), expected) << line;
}

TEST(AbsolutePathScannerRules, OnlyKnownPlacesAreRead) {
    const std::vector<std::tuple<std::string, bool, std::optional<BreakKind>>> cases = {
        {"env/bin/activate", true, BreakKind::virtualEnvironment},
        {"env/bin/activate", false, std::nullopt},
        {"App.xcodeproj/project.xcworkspace/contents.xcworkspacedata", false, BreakKind::projectCache},
        {"xcodeproj/notes.txt", false, std::nullopt},
        {"repo/.git/worktrees/w/gitdir", false, BreakKind::gitWorktreeLink},
        {"repo/worktrees/w/gitdir", false, std::nullopt},
        {"docs/CMakeCache.txt.md", false, std::nullopt},
    };
    for (const auto& [relative, scripts, expected] : cases)
        EXPECT_EQ(AbsolutePathScanner::fileKind(relative, scripts), expected) << relative;
}

}  // namespace
}  // namespace corvel
