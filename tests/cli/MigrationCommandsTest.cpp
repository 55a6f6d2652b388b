// `velmora migrate`, driven through the real binary on temporary folders: a plan that lists what
// would break and moves nothing, a verification that passes an exact copy and fails a damaged
// one, and the one-line refusals of bad paths.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::Outcome;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class MigrationCommands : public ::testing::Test {
protected:
    void SetUp() override {
        folder_.makeFolder("data");
        folder_.makeFolder("target");
        folder_.write("ws/build/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + path("ws") + "\n");
        folder_.write("ws/src/main.c", "int main(void) { return 0; }\n");
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

TEST_F(MigrationCommands, APlanListsWhatWouldBreakAndMovesNothing) {
    const auto outcome = velmora({"migrate", "plan", path("ws"), "--to", path("target")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, StartsWith("Migration PLAN: for review only; velmora moves, copies and deletes nothing."));
    EXPECT_THAT(outcome.out, HasSubstr("Would break after the move (1)"));
    EXPECT_THAT(clitest::lineWith(outcome.out, "CMake cache"), HasSubstr(path("ws/build/CMakeCache.txt") + ":1"));
    EXPECT_THAT(outcome.out, HasSubstr("rsync -aHAX '" + path("ws") + "/' '" + path("target/ws") + "/'"));
    EXPECT_TRUE(std::filesystem::exists(path("ws/src/main.c")));
    EXPECT_FALSE(std::filesystem::exists(path("target/ws")));

    const auto json = velmora({"--json", "migrate", "plan", path("ws"), "--to", path("target")});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto plan = Json::parse(json.out);
    EXPECT_EQ(plan["destination"], path("target/ws"));
    EXPECT_EQ(plan["breakingPaths"][0]["kind"], "cmakeCache");
}

TEST_F(MigrationCommands, APlanRefusesBadPathsInOneLine) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"migrate", "plan", path("ws"), "--to", path("ws/src")}, "lies inside the source"},
        {{"migrate", "plan", path("ws"), "--to", path("ws")}, "are the same folder"},
        {{"migrate", "plan", path("nowhere"), "--to", path("target")}, "the workspace is not an existing folder"},
        {{"migrate", "plan", path("ws"), "--to", path("target/none")}, "the target is not an existing folder"},
        {{"migrate", "verify", path("ws"), path("nowhere")}, "the copy is not an existing folder"},
    };
    for (const auto& [arguments, message] : cases) {
        const auto outcome = velmora(arguments);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.err, AllOf(HasSubstr(message), ::testing::EndsWith("\n")));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST_F(MigrationCommands, VerifyPassesAnExactCopyAndFailsADamagedOne) {
    std::filesystem::copy(path("ws"), path("copy"), std::filesystem::copy_options::recursive);
    const auto same = velmora({"migrate", "verify", path("ws"), path("copy")});
    ASSERT_EQ(same.status, 0) << same.err;
    EXPECT_THAT(same.out, HasSubstr("IDENTICAL: the copy matches the source."));

    std::ofstream(path("copy/src/main.c"), std::ios::binary | std::ios::in | std::ios::out).put('I');
    const auto damaged = velmora({"migrate", "verify", path("ws"), path("copy")});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(clitest::lineWith(damaged.out, "content differs"), HasSubstr("src/main.c"));
    EXPECT_THAT(damaged.out, HasSubstr("DIFFERENT: 1 difference."));

    const auto json = velmora({"--json", "migrate", "verify", path("ws"), path("copy")});
    EXPECT_EQ(json.status, 1);
    const auto result = Json::parse(json.out);
    EXPECT_EQ(result["isIdentical"], false);
    EXPECT_EQ(result["differences"][0]["path"], "src/main.c");
}

}  // namespace
}  // namespace corvel
