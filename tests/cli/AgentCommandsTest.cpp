// The agent as a real process: three cycles on a recording that changes between them, a second
// agent beside the first, SIGTERM and SIGKILL, and the start flags on a temporary home.
#include "VelmoraProcess.h"
#include "agent/AgentRecords.h"
#include "agent/MachineCopy.h"
#include "common/AtomicFile.h"
#include "common/JSONHistory.h"
#include "monitoring/HistoryStore.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <csignal>

namespace corvel::clitest {
namespace {

using testing::ChildProcess;
using testing::eventually;
using ::testing::HasSubstr;
using testing::MachineCopy;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::int64_t GB = 1000LL * 1000 * 1000;

// `words` on the copied machine with its own data folder.
std::vector<std::string> on(const MachineCopy& machine, const std::vector<std::string>& words) {
    std::vector<std::string> arguments{"--replay", machine.folder().string(), "--data-dir", machine.data().string()};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return arguments;
}

std::vector<std::string> agentRun(const MachineCopy& machine, const std::string& interval) {
    auto arguments = on(machine, {"agent", "run", "--interval-seconds", interval});
    arguments.insert(arguments.begin(), CORVEL_VELMORA_BINARY);
    return arguments;
}

std::int64_t cycles(const MachineCopy& machine) {
    const auto status = AgentFiles::read<AgentStatus>(AgentFiles(machine.data()).status());
    return status.value ? status.value->cycles : 0;
}

TEST(AgentCommands, ThreeCyclesOnAChangingMachineThenSIGTERM) {
    MachineCopy machine("mac-studio-external-usb");
    ChildProcess agent(agentRun(machine, "1"));
    ASSERT_TRUE(eventually([&] { return cycles(machine) == 1; }));

    // A second agent for the same data folder refuses to start.
    EXPECT_TRUE(failsWith(velmora(on(machine, {"agent", "run", "--once"})), 1, "another agent is already running"));

    machine.edit([](Json& recording) {
        recording["capturedAt"] = "2026-11-02T10:30:00Z";
        MachineCopy::unmount(recording, "/Volumes/media");
        MachineCopy::setAvailable(recording, "/", 90 * GB);
    });
    ASSERT_TRUE(eventually([&] { return cycles(machine) == 2; }));
    machine.edit([](Json& recording) {
        recording["capturedAt"] = "2026-11-02T11:00:00Z";
        MachineCopy::setAvailable(recording, "/", 40 * GB);
    });
    ASSERT_TRUE(eventually([&] { return cycles(machine) == 3; }));

    ::kill(agent.pid(), SIGTERM);
    const auto ended = agent.waitFor(std::chrono::seconds(5));
    ASSERT_TRUE(ended);
    EXPECT_TRUE(WIFEXITED(*ended) && WEXITSTATUS(*ended) == 0) << *ended;

    const AgentFiles files(machine.data());
    const auto status = AgentFiles::read<AgentStatus>(files.status()).value;
    ASSERT_TRUE(status);
    EXPECT_FALSE(status->isRunning);
    EXPECT_EQ(status->lastCycleAt, ISO8601::parse("2026-11-02T11:00:00Z"));
    // What each cycle found is the core's to check; the events reach `agent events`, newest first.
    const auto shown = velmora(on(machine, {"agent", "events", "--limit", "2"}), {"NO_COLOR=1"});
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr("Critical: Almost out of space"));
    EXPECT_THAT(shown.out, Not(HasSubstr("media")));  // the unmount is older than the newest two

    EXPECT_THAT(velmora(on(machine, {"history", "Macintosh HD"})).out, HasSubstr("Macintosh HD"));
}

TEST(AgentCommands, ASIGKILLMidWriteNeverLeavesATornFile) {
    MachineCopy machine("mac-studio-external-usb");
    const AgentFiles files(machine.data());
    for (int round = 0; round < 8; ++round) {
        {
            ChildProcess agent(agentRun(machine, "0"));
            const auto before = cycles(machine);
            ASSERT_TRUE(eventually([&] { return cycles(machine) > before; }));
            ::kill(agent.pid(), SIGKILL);
            agent.waitFor(std::chrono::seconds(5));
        }
        for (const auto& path : {files.status(), files.state(), files.inventory(), files.events(),
                                 HistoryStore::defaultURL(machine.data())}) {
            const auto text = AtomicFile::read(path);
            ASSERT_TRUE(text) << path;
            EXPECT_TRUE(Json::accept(*text)) << path << " after round " << round;
        }
    }
    // The killed agent's lock does not keep the next one out.
    EXPECT_EQ(velmora(on(machine, {"agent", "run", "--once"})).status, 0);
}

TEST(AgentCommands, StartFlagsPrintOneLineAndExitZero) {
    TemporaryFolder home;
    // No user systemd in a replay: registration falls back to an autostart entry in the temporary home.
    const std::vector<std::string> environment{"HOME=" + home.root().string(),
                                               "XDG_CONFIG_HOME=" + (home.root() / "config").string()};
    clitest::grantConsent({ConsentScope::backgroundAgent});
    const auto entry = home.root() / "config/autostart/velmora-agent.desktop";
    for (const std::string flag : {"--agent-register", "--agent-unregister"}) {
        const auto outcome = velmora({"--replay", machine("linux-workstation"), flag}, environment);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.out, StartsWith("agent: "));
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1);
        EXPECT_EQ(std::filesystem::exists(entry), flag == "--agent-register");
        if (flag == "--agent-register") {
            const auto status = velmora({"--replay", machine("linux-workstation"), "agent", "status"},
                                        {environment[0], environment[1], "NO_COLOR=1"});
            EXPECT_THAT(lineWith(status.out, "registered"), HasSubstr("yes"));
        }
    }
}

}  // namespace
}  // namespace corvel::clitest
