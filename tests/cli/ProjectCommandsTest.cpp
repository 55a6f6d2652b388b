// `velmora projects` through the real binary on a temporary workspace, and `velmora docker
// plan-move` over the recorded Docker machines: the blockers each target raises.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::Outcome;
using ::testing::AllOf;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ProjectCommands : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("data");
        folder_.write("src/app/package.json", "{}");
        folder_.write("src/app/node_modules/left-pad/package.json", "{}");
        folder_.write("src/app/node_modules/left-pad/index.js", std::string(40000, 'x'));
        folder_.write("src/tool/Cargo.toml", "[package]\n");
    }

    std::string path(const std::string& relative) const {
        return std::filesystem::weakly_canonical(folder_.path(relative)).string();
    }

    Outcome velmora(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", path("data")});
        return clitest::velmora(arguments, {"HOME=" + path("home"), "NO_COLOR=1"});
    }

    clitest::TemporaryFolder folder_;
};

TEST_F(ProjectCommands, ListsProjectsWithRebuildableBytesAndDeletesNothing) {
    const auto text = velmora({"projects", path("src")});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(text.out, StartsWith(path("src") + "  "));
    // What is rebuildable comes from the catalogue, which calls everything below /tmp temporary;
    // the core tests measure it on a catalogue of their own.
    EXPECT_THAT(clitest::lineWith(text.out, "app "), HasSubstr("Node"));
    EXPECT_THAT(clitest::lineWith(text.out, "tool "), HasSubstr("Rust"));
    EXPECT_TRUE(std::filesystem::exists(path("src/app/node_modules/left-pad/index.js")));

    const auto json = velmora({"--json", "projects", path("src")});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto listing = Json::parse(json.out);
    const auto& projects = listing["workspaces"][0]["projects"];
    ASSERT_EQ(projects.size(), 2u) << json.out;
    EXPECT_EQ(projects[0]["path"], path("src/app"));  // the larger one first, nothing from node_modules
    EXPECT_GE(projects[0]["allocatedBytes"].get<std::int64_t>(), 40000);
}

TEST_F(ProjectCommands, RefusesWhatItCannotLookAtInOneLine) {
    const auto missing = velmora({"projects", path("nowhere")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.err, AllOf(HasSubstr("not an existing folder"), HasSubstr("nowhere")));

    const auto recorded = velmora({"--replay", clitest::machine("macbook-air-m2"), "projects"});
    EXPECT_EQ(recorded.status, 1);
    EXPECT_THAT(recorded.err, HasSubstr("holds no file tree"));
    EXPECT_EQ(std::count(recorded.err.begin(), recorded.err.end(), '\n'), 1);
}

std::vector<std::string> blockerKinds(const std::string& machineName, const std::string& target) {
    clitest::TemporaryFolder data;
    const auto outcome = clitest::velmora({"--data-dir", data.path("data"), "--json", "--replay",
                                           clitest::machine(machineName), "docker", "plan-move", "--to", target});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::vector<std::string> kinds;
    const auto plan = Json::parse(outcome.out);
    EXPECT_TRUE(plan.contains("blockers")) << outcome.out.substr(0, 400) << outcome.err;
    for (const auto& blocker : plan.value("blockers", Json::array())) kinds.push_back(blocker["kind"]);
    return kinds;
}

TEST(DockerPlanMove, RecordedMachinesRaiseTheirBlockers) {
    struct Case {
        const char* machine;
        const char* target;
        std::vector<std::string> expected;
    };
    const std::vector<Case> cases = {
        // The image already lives on Projects, and Docker Desktop is running.
        {"mac-docker-running", "/Volumes/Projects", {"engineRunning", "sameVolume"}},
        {"mac-docker-running", "/Volumes/Elements", {"engineRunning", "unsuitableFileSystem"}},
        // Quit, its image on the internal disk, the external APFS disk roomy: ready.
        {"mac-docker-stopped", "/Volumes/Projects", {}},
        {"mac-docker-stopped", "/Volumes/media", {"unsuitableFileSystem"}},
        {"mac-docker-stopped", "/Users/sam/Docker", {"sameVolume"}},
        {"linux-docker-engine", "/data", {"engineRunning"}},
        {"linux-docker-engine", "/srv/docker", {"engineRunning", "sameVolume"}},
    };
    for (const auto& c : cases)
        EXPECT_THAT(blockerKinds(c.machine, c.target), ElementsAreArray(c.expected)) << c.machine << " " << c.target;
}

TEST(DockerPlanMove, PrintsStepsForReviewAndRunsNothing) {
    clitest::TemporaryFolder data;
    const auto outcome =
        clitest::velmora({"--data-dir", data.path("data"), "--replay", clitest::machine("linux-docker-engine"),
                          "docker", "plan-move", "--to", "/data"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Docker move PLAN: for review only"));
    EXPECT_THAT(outcome.out, HasSubstr("sudo rsync -aHAX --numeric-ids '/var/lib/docker/' '/data/docker/'"));
    EXPECT_THAT(clitest::lineWith(outcome.out, "Data root"), HasSubstr("12.08 GB allocated"));
    EXPECT_THAT(outcome.out, HasSubstr("Blocked: 1 blocker"));
    // The plain `docker` overview does not run along with its subcommand.
    EXPECT_THAT(outcome.out, Not(HasSubstr("\nDisk usage reported by the engine")));
}

}  // namespace
}  // namespace corvel
