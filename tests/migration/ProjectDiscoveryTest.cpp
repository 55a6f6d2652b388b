// Finding projects: which names mark a project, how worktree links are read, which roots are
// searched, and a whole search over a temporary workspace with a repository, its worktree, a
// nested package, a multi-folder CMake build, dependency folders and a project out of reach.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "migration/ProjectDiscovery.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <set>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Optional;
using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;

TEST(ProjectDiscoveryTest, ManifestNamesMarkTheirKinds) {
    struct Case {
        std::vector<std::string> names;
        std::vector<ProjectKind> expected;
    };
    const std::vector<Case> cases = {
        {{"README.md", "src", "LICENSE"}, {}},
        {{"package.json", "node_modules"}, {ProjectKind::node}},
        {{"Cargo.toml", "Cargo.lock"}, {ProjectKind::rust}},
        {{"Demo.xcodeproj", "Package.swift"}, {ProjectKind::swiftPackage, ProjectKind::xcode}},
        {{"App.xcworkspace"}, {ProjectKind::xcode}},
        // A bare suffix is a hidden file, not a project bundle.
        {{".xcodeproj"}, {}},
        {{"requirements.txt", "pyproject.toml"}, {ProjectKind::python}},
        {{"go.mod", "Gemfile", "pom.xml"}, {ProjectKind::go, ProjectKind::ruby, ProjectKind::maven}},
        {{"settings.gradle.kts", "CMakeLists.txt"}, {ProjectKind::gradle, ProjectKind::cmake}},
        {{"Tool.csproj"}, {ProjectKind::dotnet}},
        {{"package.json.bak", "Cargo.toml~"}, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ProjectDiscovery::kindsFromNames(c.names), c.expected) << ::testing::PrintToString(c.names);
}

TEST(ProjectDiscoveryTest, BuildsThatSpanAFolderTreeAreNotNestedProjects) {
    using K = ProjectKind;
    EXPECT_THAT(ProjectDiscovery::nestedKinds({K::cmake}, {K::git, K::cmake}), IsEmpty());
    EXPECT_THAT(ProjectDiscovery::nestedKinds({K::gradle, K::maven}, {K::gradle}), ElementsAre(K::maven));
    // A package inside a monorepo is a project of its own.
    EXPECT_THAT(ProjectDiscovery::nestedKinds({K::node}, {K::git, K::node}), ElementsAre(K::node));
    EXPECT_THAT(ProjectDiscovery::nestedKinds({K::cmake}, {K::node}), ElementsAre(K::cmake));
}

TEST(ProjectDiscoveryTest, WorktreeLinksNameTheirRepository) {
    struct Case {
        const char* text;
        std::optional<std::string> repository;
    };
    const std::vector<Case> cases = {
        {"gitdir: /home/me/src/app/.git/worktrees/feature\n", "/home/me/src/app"},
        {"gitdir: ../app/.git/worktrees/feature", "/home/me/src/app"},
        {"  gitdir:/srv/repo/.git/worktrees/x  ", "/srv/repo"},
        // A submodule's link points into modules/, not worktrees/.
        {"gitdir: ../.git/modules/lib", std::nullopt},
        {"gitdir: /srv/repo/worktrees/x", std::nullopt},
        {"ref: refs/heads/main", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ProjectDiscovery::repositoryOfGitFile(c.text, "/home/me/src/app-feature"), c.repository) << c.text;

    EXPECT_THAT(ProjectDiscovery::worktreeOfGitdirFile("/home/me/src/app-feature/.git\n"),
                Optional(std::string("/home/me/src/app-feature")));
    EXPECT_EQ(ProjectDiscovery::worktreeOfGitdirFile("relative/.git"), std::nullopt);
    EXPECT_EQ(ProjectDiscovery::worktreeOfGitdirFile("/home/me/src/app-feature"), std::nullopt);
}

TEST(ProjectDiscoveryTest, DefaultRootsAreTheSettingThenExistingHomeFolders) {
    const std::set<std::string> existing{"/work/main", "/home/me/src", "/home/me/Developer", "/home/me/code",
                                         "/home/me/src/inner"};
    const auto isFolder = [&](const std::string& path) { return existing.count(path) > 0; };
    EXPECT_THAT(
        ProjectDiscovery::defaultRoots({"/work/main", "/gone", "relative", "/home/me/src/inner"}, "/home/me", isFolder),
        ElementsAre("/work/main", "/home/me/src", "/home/me/Developer", "/home/me/code"));
    EXPECT_THAT(ProjectDiscovery::defaultRoots({}, "/nowhere", isFolder), IsEmpty());
    EXPECT_THAT(ProjectDiscovery::independentRoots({"/a/b", "/a", "/a", "/c", "/c/d"}), ElementsAre("/a", "/c"));
}

class ProjectSearchTest : public ::testing::Test {
protected:
    ProjectSearchTest() {
        const std::string kilobytes64(64 * 1024, 'n');
        folder.write("app/package.json", "{}");
        folder.write("app/src/index.js", "console.log(1)");
        folder.write("app/.git/HEAD", "ref: refs/heads/main\n");
        folder.write("app/.git/worktrees/feature/gitdir", folder.path("app-feature/.git") + "\n");
        folder.write("app/node_modules/lodash/package.json", "{}");
        folder.write("app/node_modules/lodash/lodash.js", kilobytes64);
        folder.write("app/.build/debug/app.o", std::string(32 * 1024, 'o'));
        folder.write("app/packages/ui/package.json", "{}");
        folder.write("app/packages/ui/node_modules/react/index.js", std::string(16 * 1024, 'r'));
        folder.write("app-feature/.git", "gitdir: " + folder.path("app/.git/worktrees/feature") + "\n");
        folder.write("app-feature/package.json", "{}");
        folder.write("lib/CMakeLists.txt", "project(lib)");
        folder.write("lib/sub/CMakeLists.txt", "add_library(sub)");
        folder.write("lib/vendor/zlib/CMakeLists.txt", "project(zlib)");
        folder.write("notes/todo.txt", "nothing here");
        folder.write(".hidden/Cargo.toml", "[package]");
        folder.write("deep/a/b/c/Cargo.toml", "[package]");
    }

    Workspace search(int maxDepth) {
        // Inside a project root the catalogue keeps dependency folders reviewable wherever the
        // temporary folder lies (under /tmp a Linux catalogue would call everything temporary).
        const SpaceCatalog catalog("/nonexistent-home", {folder.path()}, Platform::linux);
        ScanProgress progress;
        ProjectDiscoveryOptions options;
        options.maxDepth = maxDepth;
        options.threads = 2;
        return ProjectDiscovery::discoverIn(folder.path(), catalog, options, progress, [] { return false; });
    }

    const Project& project(const Workspace& workspace, const std::string& relative) {
        const auto path = folder.path(relative);
        const auto found = std::find_if(workspace.projects.begin(), workspace.projects.end(),
                                        [&](const Project& p) { return p.path == path; });
        if (found == workspace.projects.end()) throw std::runtime_error("no project " + relative);
        return *found;
    }

    TemporaryFolder folder;
};

TEST_F(ProjectSearchTest, FindsRepositoriesWorktreesAndManifestsButNotDependencies) {
    const auto workspace = search(3);
    std::vector<std::string> paths;
    for (const auto& p : workspace.projects) paths.push_back(p.path);
    // Not node_modules/lodash, not lib/sub or lib/vendor/zlib, not .hidden, not deep/a/b/c (depth 4).
    EXPECT_THAT(paths, UnorderedElementsAre(folder.path("app"), folder.path("app/packages/ui"),
                                            folder.path("app-feature"), folder.path("lib")));
    EXPECT_THAT(workspace.problems, IsEmpty());

    const auto& app = project(workspace, "app");
    EXPECT_THAT(app.kinds, ElementsAre(ProjectKind::git, ProjectKind::node));
    EXPECT_THAT(app.worktrees, ElementsAre(folder.path("app-feature")));
    EXPECT_EQ(app.insideOf, std::nullopt);

    const auto& feature = project(workspace, "app-feature");
    EXPECT_THAT(feature.kinds, ElementsAre(ProjectKind::gitWorktree, ProjectKind::node));
    EXPECT_THAT(feature.repository, Optional(folder.path("app")));

    EXPECT_THAT(project(workspace, "app/packages/ui").insideOf, Optional(folder.path("app")));
    EXPECT_THAT(project(workspace, "lib").kinds, ElementsAre(ProjectKind::cmake));
}

TEST_F(ProjectSearchTest, MeasuresRebuildablePartsFromTheCatalogue) {
    const auto workspace = search(3);
    const auto& app = project(workspace, "app");
    EXPECT_THAT(app.rebuildable,
                UnorderedElementsAre(Field(&RebuildablePart::path, folder.path("app/node_modules")),
                                     Field(&RebuildablePart::path, folder.path("app/.build")),
                                     Field(&RebuildablePart::path, folder.path("app/packages/ui/node_modules"))));
    std::int64_t sum = 0;
    for (const auto& part : app.rebuildable) sum += part.allocatedBytes;
    EXPECT_EQ(app.rebuildableBytes, sum);
    EXPECT_GE(app.rebuildableBytes, (64 + 32 + 16) * 1024);
    EXPECT_GT(app.allocatedBytes, app.rebuildableBytes);                      // the sources and .git are more
    EXPECT_EQ(app.rebuildable.front().category, SpaceCategory::nodeModules);  // largest first
    EXPECT_EQ(project(workspace, "lib").rebuildableBytes, 0);
    EXPECT_GE(workspace.allocatedBytes, app.allocatedBytes);
    // Largest first.
    EXPECT_EQ(workspace.projects.front().path, folder.path("app"));
}

TEST_F(ProjectSearchTest, DepthBoundsTheSearch) {
    const auto shallow = search(0);
    EXPECT_THAT(shallow.projects, IsEmpty());
    const auto deep = search(4);
    EXPECT_THAT(deep.projects, Contains(Field(&Project::path, folder.path("deep/a/b/c"))));
    EXPECT_THAT(deep.projects, Not(Contains(Field(&Project::path, folder.path(".hidden")))));
}

TEST(ProjectDiscoveryTest, AMissingRootIsAProblemOfItsWorkspace) {
    const SpaceCatalog catalog("/nonexistent-home", {}, Platform::linux);
    ScanProgress progress;
    const auto listing =
        ProjectDiscovery::discover({"/nonexistent/projects"}, catalog, {}, progress, [] { return false; });
    ASSERT_EQ(listing.workspaces.size(), 1u);
    EXPECT_THAT(listing.workspaces[0].problems, ElementsAre(::testing::HasSubstr("/nonexistent/projects")));
    EXPECT_THAT(listing.workspaces[0].projects, IsEmpty());
    EXPECT_FALSE(listing.wasCancelled);
}

}  // namespace
}  // namespace corvel
