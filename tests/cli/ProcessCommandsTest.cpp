// `velmora processes` on this machine's live processes, acting only on children this test starts.
// Each child runs a copy of sleep under a name unique to this run, so its group holds nothing else
// even while other programs run sleep here; every action names the group by its id.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvel::cli {
namespace {

using clitest::machine;
using clitest::TemporaryFolder;
using clitest::velmora;
using ::testing::AllOf;
using testing::ChildProcess;
using ::testing::ElementsAre;
using testing::eventually;
using ::testing::Gt;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Sleeper {
    std::string path;
    std::string name;
};

// A copy of sleep called `name` plus our pid, in a folder every user may enter and run from.
Sleeper sleeperCopy(const TemporaryFolder& folder, const std::string& name) {
    namespace fs = std::filesystem;
    const Sleeper copy{folder.path(name + "-" + std::to_string(::getpid())), name + "-" + std::to_string(::getpid())};
    fs::copy_file(::access("/bin/sleep", X_OK) == 0 ? "/bin/sleep" : "/usr/bin/sleep", copy.path);
    fs::permissions(copy.path, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
    fs::permissions(folder.root(), fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
    return copy;
}

Json listing() {
    const auto outcome = velmora({"processes", "--all", "--json", "--top", "0", "--interval", "0"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return Json::parse(outcome.out);
}

// The listed groups called `name`, once `pid` shows in one of them (a child execs a moment after
// it starts, and is listed under its parent's name until then).
std::vector<Json> groupsNamed(const std::string& name, int pid) {
    std::vector<Json> found;
    eventually([&] {
        found.clear();
        bool seen = false;
        const auto document = listing();
        for (const auto& group : document.at("groups"))
            if (group.at("name") == name) {
                found.push_back(group);
                for (const auto& each : group.at("pids")) seen = seen || each == pid;
            }
        return seen;
    });
    return found;
}

std::string idOf(const std::string& name, int pid) {
    const auto groups = groupsNamed(name, pid);
    EXPECT_EQ(groups.size(), 1u) << name;
    return groups.empty() ? "" : groups.front().at("id").get<std::string>();
}

TEST(ProcessesCommand, ListsOwnChildWithItsFiguresInTextAndJson) {
    TemporaryFolder folder;
    const auto [program, name] = sleeperCopy(folder, "listed");
    ChildProcess child({program, "30"});

    const auto groups = groupsNamed(name, child.pid());
    ASSERT_EQ(groups.size(), 1u);
    const auto& group = groups.front();
    EXPECT_EQ(group.at("isCurrentUser"), true);
    EXPECT_THAT(group.at("pids").get<std::vector<int>>(), ElementsAre(child.pid()));
    EXPECT_THAT(group.at("memoryBytes").get<std::int64_t>(), Gt(0));
    EXPECT_EQ(group.at("executablePath"), program);

    const auto text = velmora({"processes", "--top", "0", "--interval", "50"});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("Your processes · CPU over 0.05 s, sorted by cpu"));
    EXPECT_THAT(clitest::lineWith(text.out, name), AllOf(HasSubstr("process"), HasSubstr(" 1 ")));
    EXPECT_THAT(text.out, HasSubstr("Memory is the "));
}

TEST(ProcessesCommand, QuitAndForceQuitEndTheChildrenAndAreLogged) {
    TemporaryFolder folder;
    const auto data = folder.path("data");
    clitest::grantConsent({ConsentScope::processControl}, data);
    const auto [polite, firstName] = sleeperCopy(folder, "polite");
    const auto [forced, secondName] = sleeperCopy(folder, "forced");
    ChildProcess first({polite, "30"});
    ChildProcess second({forced, "30"});

    const auto quit = velmora({"processes", "--data-dir", data, "quit", idOf(firstName, first.pid()), "--yes"});
    EXPECT_EQ(quit.status, 0) << quit.err;
    EXPECT_THAT(quit.out, HasSubstr(firstName + ": Quit"));
    EXPECT_TRUE(first.waitFor(std::chrono::seconds(5)));

    const auto kill = velmora({"processes", "--data-dir", data, "force-quit", idOf(secondName, second.pid()), "--yes"});
    EXPECT_EQ(kill.status, 0) << kill.err;
    EXPECT_TRUE(second.waitFor(std::chrono::seconds(5)));

    const auto log = velmora({"processes", "--data-dir", data, "log", "--json"});
    ASSERT_EQ(log.status, 0) << log.err;
    const auto records = Json::parse(log.out).at("records");
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].at("action"), "quit");
    EXPECT_EQ(records[0].at("name"), firstName);
    EXPECT_THAT(records[0].at("pids").get<std::vector<int>>(), ElementsAre(first.pid()));
    EXPECT_EQ(records[1].at("action"), "forceQuit");
    EXPECT_THAT(records[1].at("pids").get<std::vector<int>>(), ElementsAre(second.pid()));

    const auto text = velmora({"processes", "--data-dir", data, "log"});
    EXPECT_THAT(clitest::lineWith(text.out, firstName), HasSubstr("Quit"));
    EXPECT_THAT(clitest::lineWith(text.out, secondName), HasSubstr("Force Quit"));
}

// Every refusal reason the policy has, reached from the command line: the child stays, nothing is
// recorded, and the reason is the one line on stderr.
TEST(ProcessesCommand, PolicyRefusesBeforeAnythingIsDone) {
    TemporaryFolder folder;
    const auto data = folder.path("data");
    clitest::grantConsent({ConsentScope::processControl}, data);
    const auto [plain, plainName] = sleeperCopy(folder, "plain");
    const auto protectedCopy = folder.path("WindowServer");
    std::filesystem::copy_file(plain, protectedCopy);
    ChildProcess child({plain, "30"});
    ChildProcess windowServer({protectedCopy, "30"});
    const auto plainID = idOf(plainName, child.pid());
    ChildProcess stranger({"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", plain, "30"});
    groupsNamed("WindowServer", windowServer.pid());
    // Ours and the stranger's copy share a name; the stranger's group is "65534:<name>".
    ASSERT_EQ(groupsNamed(plainName, stranger.pid()).size(), 2u);

    struct Case {
        std::vector<std::string> words;
        std::string reason;
    };
    const std::vector<Case> cases{
        {{"quit", "velmora"}, "This is Velmora itself."},
        {{"force-quit", "65534:" + plainName}, "System process — macOS manages it."},
        {{"quit", "1"}, "System process — macOS manages it."},
        {{"force-quit", "WindowServer"}, "Protected: stopping it would disrupt macOS."},
        {{"relaunch", plainID}, "Only apps can be relaunched."},
    };
    for (const auto& each : cases) {
        auto words = std::vector<std::string>{"processes", "--data-dir", data};
        words.insert(words.end(), each.words.begin(), each.words.end());
        words.push_back("--yes");
        const auto outcome = velmora(words);
        EXPECT_EQ(outcome.status, 1) << each.words.back();
        EXPECT_THAT(outcome.err, HasSubstr("is not allowed: " + each.reason)) << each.words.back();
    }
    EXPECT_TRUE(child.isRunning());
    EXPECT_TRUE(windowServer.isRunning());
    EXPECT_TRUE(stranger.isRunning());
    const auto log = velmora({"processes", "--data-dir", data, "log", "--json"});
    EXPECT_THAT(Json::parse(log.out).at("records"), IsEmpty());

    // Two users' groups under one name: both are listed, nothing is done.
    const auto ambiguous = velmora({"processes", "--data-dir", data, "quit", plainName, "--yes"});
    EXPECT_EQ(ambiguous.status, 2);
    EXPECT_THAT(ambiguous.err, AllOf(HasSubstr("names 2 process groups"), HasSubstr("65534:" + plainName),
                                     HasSubstr("name one of them by its id")));
    EXPECT_TRUE(child.isRunning());
}

TEST(ProcessesCommand, BadInputIsOneLineAndExitTwo) {
    clitest::grantConsent({ConsentScope::processControl});
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"processes", "quit", "no-such-group-anywhere"}, "no running process group 'no-such-group-anywhere'"},
        {{"processes", "--replay", machine("mac-docker-running")}, "a recorded machine has no live processes"},
        {{"processes", "--sort", "name"}, "--sort"},
        {{"processes", "--top", "-1"}, "--top"},
    };
    for (const auto& [words, message] : cases) {
        const auto outcome = velmora(words);
        EXPECT_TRUE(clitest::failsWith(outcome, 2, message));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
}

}  // namespace
}  // namespace corvel::cli
