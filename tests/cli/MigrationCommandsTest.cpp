// `velmora migrate` and `velmora projects` through the real binary on a temporary workspace, and
// `velmora docker plan-move` over the recorded Docker machines: plans that move nothing, a
// verification that passes an exact copy and fails a damaged one, and the one-line refusals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::failsWith;
using clitest::lineWith;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class MigrationCommands : public ::testing::Test {
protected:
    void SetUp() override {
        box_.folder.makeFolder("target");
        box_.write("ws/build/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + path("ws") + "\n");
        box_.write("ws/src/main.c", "int main(void) { return 0; }\n");
        box_.write("src/app/package.json", "{}");
        box_.write("src/app/node_modules/left-pad/index.js", std::string(40000, 'x'));
        box_.write("src/tool/Cargo.toml", "[package]\n");
    }
    std::string path(const std::string& relative) const { return box_.path(relative); }

    clitest::Sandbox box_;
};

TEST_F(MigrationCommands, APlanListsWhatWouldBreakAndMovesNothing) {
    const auto outcome = box_.run({"migrate", "plan", path("ws"), "--to", path("target")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Migration PLAN: for review only; velmora moves, copies and deletes nothing."));
    EXPECT_THAT(lineWith(outcome.out, "CMake cache"), HasSubstr(path("ws/build/CMakeCache.txt") + ":1"));
    EXPECT_THAT(outcome.out, HasSubstr("rsync -aHAX '" + path("ws") + "/' '" + path("target/ws") + "/'"));
    EXPECT_TRUE(std::filesystem::exists(path("ws/src/main.c")));
    EXPECT_FALSE(std::filesystem::exists(path("target/ws")));

    const auto plan = box_.json({"migrate", "plan", path("ws"), "--to", path("target")});
    EXPECT_EQ(plan["destination"], path("target/ws"));
    EXPECT_EQ(plan["breakingPaths"][0]["kind"], "cmakeCache");
}

TEST_F(MigrationCommands, BadPathsAreRefusedInOneLine) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"migrate", "plan", path("ws"), "--to", path("ws/src")}, "lies inside the source"},
        {{"migrate", "plan", path("ws"), "--to", path("ws")}, "are the same folder"},
        {{"migrate", "plan", path("nowhere"), "--to", path("target")}, "the workspace is not an existing folder"},
        {{"migrate", "plan", path("ws"), "--to", path("target/none")}, "the target is not an existing folder"},
        {{"migrate", "verify", path("ws"), path("nowhere")}, "the copy is not an existing folder"},
        {{"projects", path("nowhere")}, "not an existing folder: " + path("nowhere")},
    };
    for (const auto& [arguments, message] : cases) EXPECT_TRUE(failsWith(box_.run(arguments), 2, message));
    EXPECT_TRUE(
        failsWith(box_.run({"--replay", clitest::machine("macbook-air-m2"), "projects"}), 1, "holds no file tree"));
}

TEST_F(MigrationCommands, VerifyPassesAnExactCopyAndFailsADamagedOne) {
    std::filesystem::copy(path("ws"), path("copy"), std::filesystem::copy_options::recursive);
    const auto same = box_.run({"migrate", "verify", path("ws"), path("copy")});
    ASSERT_EQ(same.status, 0) << same.err;
    EXPECT_THAT(same.out, HasSubstr("IDENTICAL: the copy matches the source."));

    std::ofstream(path("copy/src/main.c"), std::ios::binary | std::ios::in | std::ios::out).put('I');
    const auto damaged = box_.run({"migrate", "verify", path("ws"), path("copy")});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(lineWith(damaged.out, "content differs"), HasSubstr("src/main.c"));
    EXPECT_THAT(damaged.out, HasSubstr("DIFFERENT: 1 difference."));

    const auto json = box_.run({"--json", "migrate", "verify", path("ws"), path("copy")});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(Json::parse(json.out)["differences"][0]["path"], "src/main.c");
}

TEST_F(MigrationCommands, ProjectsAreListedWithTheirKindsAndNothingIsDeleted) {
    const auto text = box_.run({"projects", path("src")});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(text.out, StartsWith(path("src") + "  "));
    EXPECT_THAT(lineWith(text.out, "app "), HasSubstr("Node"));
    EXPECT_THAT(lineWith(text.out, "tool "), HasSubstr("Rust"));
    EXPECT_TRUE(std::filesystem::exists(path("src/app/node_modules/left-pad/index.js")));

    const Json listing = box_.json({"projects", path("src")});
    const auto& projects = listing["workspaces"][0]["projects"];
    ASSERT_EQ(projects.size(), 2u);
    EXPECT_EQ(projects[0]["path"], path("src/app"));  // the larger one first, nothing from node_modules
}

TEST_F(MigrationCommands, DockerPlanMoveRaisesTheRecordedMachinesBlockersAndRunsNothing) {
    const std::vector<std::tuple<std::string, std::string, std::vector<std::string>>> cases = {
        {"mac-docker-running", "/Volumes/Projects", {"engineRunning", "sameVolume"}},
        {"mac-docker-stopped", "/Volumes/Projects", {}},
        {"linux-docker-engine", "/data", {"engineRunning"}},
    };
    for (const auto& [name, target, expected] : cases) {
        std::vector<std::string> kinds;
        const Json plan = box_.json({"--replay", clitest::machine(name), "docker", "plan-move", "--to", target});
        for (const auto& blocker : plan.at("blockers")) kinds.push_back(blocker["kind"]);
        EXPECT_THAT(kinds, ElementsAreArray(expected)) << name << " " << target;
    }
    const auto outcome =
        box_.run({"--replay", clitest::machine("linux-docker-engine"), "docker", "plan-move", "--to", "/data"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Docker move PLAN: for review only"));
    EXPECT_THAT(outcome.out, HasSubstr("sudo rsync -aHAX --numeric-ids '/var/lib/docker/' '/data/docker/'"));
    EXPECT_THAT(outcome.out, HasSubstr("Blocked: 1 blocker"));
    // The plain `docker` overview does not run along with its subcommand.
    EXPECT_THAT(outcome.out, Not(HasSubstr("\nDisk usage reported by the engine")));
}

}  // namespace
}  // namespace corvel
