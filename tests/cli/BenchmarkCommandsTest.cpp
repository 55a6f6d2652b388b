// velmora bench on a temporary folder of this machine's disk, with a small file and a fraction of
// a second per test: the consent gate, bad options, a whole run with its history, and the file
// never outliving a run stopped by Ctrl-C or kill -9.
#include "VelmoraProcess.h"
#include "common/Json.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <csignal>
#include <filesystem>

namespace corvel::clitest {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::SizeIs;

const std::vector<std::string> quick{"--size", "8MiB", "--seconds", "0.05"};

std::vector<std::string> bench(const std::string& folder, std::vector<std::string> extra = quick) {
    std::vector<std::string> arguments{"bench", folder};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return arguments;
}

bool isEmptyFolder(const std::string& folder) {
    return std::filesystem::directory_iterator(folder) == std::filesystem::directory_iterator();
}

// Whether process `pid` holds a file open inside `folder` (nameless files show as "folder/#ino").
bool holdsFileIn(pid_t pid, const std::string& folder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd", error)) {
        const auto target = std::filesystem::read_symlink(entry.path(), error).string();
        if (target.rfind(folder + "/", 0) == 0) return true;
    }
    return false;
}

TEST(BenchCommand, AsksForConsentAndChecksOptionsBeforeWriting) {
    TemporaryFolder folder;
    ASSERT_EQ(velmora({"consent", "withdraw"}).status, 0);
    EXPECT_TRUE(failsWith(velmora(bench(folder.path())), 1, "benchmark"));

    ASSERT_EQ(velmora({"consent", "accept", "--scope", "benchmark"}).status, 0);
    const std::vector<std::tuple<std::vector<std::string>, int, std::string>> cases{
        {bench(folder.path(), {"--size", "lots"}), 2, "--size 'lots'"},
        {bench(folder.path(), {"--seconds", "0"}), 2, "seconds per test"},
        {bench(folder.path(), {"--size", "1000"}), 2, "too small"},
        {{"bench"}, 2, "needs a PATH"},
        {bench(folder.path("missing")), 1, folder.path("missing")},
        {bench(folder.path(), {"--size", "1000TiB"}), 1, "free; the benchmark needs"}};
    for (const auto& [arguments, status, says] : cases) EXPECT_TRUE(failsWith(velmora(arguments), status, says));
    EXPECT_TRUE(isEmptyFolder(folder.path()));
}

TEST(BenchCommand, ARunPrintsEveryTestAndIsKeptInTheHistory) {
    TemporaryFolder folder;
    ASSERT_EQ(velmora({"consent", "accept", "--scope", "benchmark"}).status, 0);
    auto arguments = bench(folder.path());
    arguments.insert(arguments.begin(), "--json");
    const Outcome json = velmora(arguments);
    ASSERT_EQ(json.status, 0) << json.err;
    const Json run = Json::parse(json.out);
    EXPECT_THAT(run.at("results"), SizeIs(8));
    EXPECT_EQ(run.at("fileBytes"), 8 << 20);
    EXPECT_TRUE(isEmptyFolder(folder.path()));

    const Outcome text = velmora(bench(folder.path()), {"NO_COLOR=1"});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(lineWith(text.out, "TEST"), AllOf(HasSubstr("MB/S"), HasSubstr("IOPS"), HasSubstr("P99.9")));
    EXPECT_THAT(text.out, HasSubstr("8.4 MB test file"));

    const Outcome history = velmora({"--json", "bench", "--history", folder.path()});
    ASSERT_EQ(history.status, 0) << history.err;
    const Json runs = Json::parse(history.out);
    ASSERT_GE(runs.size(), 2u);
    EXPECT_EQ(runs.back().at("mountPoint"), run.at("mountPoint"));
    const Outcome listed = velmora({"bench", "--history"}, {"NO_COLOR=1"});
    EXPECT_THAT(listed.out, HasSubstr("RND4K Q32 R/W IOPS"));
}

TEST(BenchCommand, TheFileNeverOutlivesAnInterruptedRun) {
    ASSERT_EQ(velmora({"consent", "accept", "--scope", "benchmark"}).status, 0);
    for (const int signal : {SIGINT, SIGKILL}) {
        SCOPED_TRACE(signal);
        TemporaryFolder folder;
        testing::ChildProcess child(
            {CORVEL_VELMORA_BINARY, "bench", folder.path(), "--size", "16MiB", "--seconds", "10"});
        ASSERT_TRUE(testing::eventually([&] { return holdsFileIn(child.pid(), folder.path()); }));
        ASSERT_EQ(::kill(child.pid(), signal), 0);
        const auto status = child.waitFor(std::chrono::seconds(5));
        ASSERT_TRUE(status.has_value()) << "velmora did not stop";
        if (signal == SIGINT) {
            EXPECT_EQ(WEXITSTATUS(*status), 1);
        }
        EXPECT_TRUE(isEmptyFolder(folder.path()));
    }
}

}  // namespace
}  // namespace corvel::clitest
