// The agent as a real process: three cycles on a recording that changes between them, a second
// agent beside the first, SIGTERM and SIGKILL, and the start flags on a temporary home.
#include "VelmoraProcess.h"
#include "agent/AgentRecords.h"
#include "agent/MachineCopy.h"
#include "common/AtomicFile.h"
#include "common/JSONHistory.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MonitorEvent.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <csignal>

namespace corvel::clitest {
namespace {

using ::testing::AllOf;
using testing::ChildProcess;
using ::testing::Contains;
using testing::eventually;
using ::testing::Field;
using ::testing::HasSubstr;
using testing::MachineCopy;
using ::testing::Not;
using ::testing::Pair;
using ::testing::StartsWith;

constexpr std::int64_t GB = 1000LL * 1000 * 1000;
const std::string rootAlert = "volume.freeSpace|volume:0E2C4A6E-8C0A-4E2C-A4E6-C8A0E2C4A6E8";

std::vector<std::string> agentRun(const MachineCopy& machine, const std::vector<std::string>& extra) {
    std::vector<std::string> arguments{CORVEL_VELMORA_BINARY,
                                       "--replay",
                                       machine.folder().string(),
                                       "--data-dir",
                                       machine.data().string(),
                                       "agent",
                                       "run"};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    return arguments;
}

std::int64_t cycles(const MachineCopy& machine) {
    const auto status = AgentFiles::read<AgentStatus>(AgentFiles(machine.data()).status());
    return status.value ? status.value->cycles : 0;
}

TEST(AgentCommands, ThreeCyclesOnAChangingMachineThenSIGTERM) {
    MachineCopy machine("mac-studio-external-usb");
    ChildProcess agent(agentRun(machine, {"--interval-seconds", "1"}));
    ASSERT_TRUE(eventually([&] { return cycles(machine) == 1; }));

    // A second agent for the same data folder refuses to start.
    const auto second = velmora(
        {"--replay", machine.folder().string(), "--data-dir", machine.data().string(), "agent", "run", "--once"});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.err, HasSubstr("another agent is already running"));

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
    EXPECT_THAT(AgentFiles::read<AgentState>(files.state()).value->activeAlerts,
                Contains(Pair(rootAlert, Severity::critical)));
    EXPECT_EQ(AgentFiles::read<AgentInventory>(files.inventory()).value->snapshot.volumes.size(), 3u);
    const auto events = JSONHistory<MonitorEvent>(files.events(), AgentFiles::eventLimit).all();
    EXPECT_THAT(events, Contains(AllOf(Field(&MonitorEvent::kind, MonitorEventKind::unmounted),
                                       Field(&MonitorEvent::subjectName, "media"))));
    EXPECT_THAT(events, Contains(AllOf(Field(&MonitorEvent::subjectID, rootAlert),
                                       Field(&MonitorEvent::severity, Severity::warning))));
    EXPECT_THAT(events, Contains(AllOf(Field(&MonitorEvent::subjectID, rootAlert),
                                       Field(&MonitorEvent::severity, Severity::critical))));

    const auto shown = velmora({"--replay", machine.folder().string(), "--data-dir", machine.data().string(), "agent",
                                "events", "--limit", "2"},
                               {"NO_COLOR=1"});
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_THAT(shown.out, HasSubstr("Critical: Almost out of space"));
    EXPECT_THAT(shown.out, Not(HasSubstr("media")));  // the unmount is older than the newest two

    const auto history = velmora(
        {"--replay", machine.folder().string(), "--data-dir", machine.data().string(), "history", "Macintosh HD"},
        {"NO_COLOR=1"});
    EXPECT_EQ(history.status, 0) << history.err;
    EXPECT_THAT(history.out, HasSubstr("Macintosh HD"));
}

TEST(AgentCommands, ASIGKILLMidWriteNeverLeavesATornFile) {
    MachineCopy machine("mac-studio-external-usb");
    const AgentFiles files(machine.data());
    for (int round = 0; round < 8; ++round) {
        {
            ChildProcess agent(agentRun(machine, {"--interval-seconds", "0"}));
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
    EXPECT_EQ(velmora({"--replay", machine.folder().string(), "--data-dir", machine.data().string(), "agent", "run",
                       "--once"})
                  .status,
              0);
}

TEST(AgentCommands, StartFlagsPrintOneLineAndExitZero) {
    TemporaryFolder home;
    // No user systemd in a replay: registration falls back to an autostart entry in the temporary home.
    const std::vector<std::string> environment{"HOME=" + home.root().string(),
                                               "XDG_CONFIG_HOME=" + (home.root() / "config").string()};
    clitest::grantConsent({ConsentScope::backgroundAgent});
    const auto registered = velmora({"--replay", machine("linux-workstation"), "--agent-register"}, environment);
    EXPECT_EQ(registered.status, 0) << registered.err;
    EXPECT_THAT(registered.out, StartsWith("agent: "));
    EXPECT_EQ(std::count(registered.out.begin(), registered.out.end(), '\n'), 1);
    EXPECT_TRUE(std::filesystem::exists(home.root() / "config/autostart/velmora-agent.desktop"));

    const auto status = velmora({"--replay", machine("linux-workstation"), "agent", "status"},
                                {environment[0], environment[1], "NO_COLOR=1"});
    EXPECT_THAT(lineWith(status.out, "registered"), HasSubstr("yes"));

    const auto removed = velmora({"--replay", machine("linux-workstation"), "--agent-unregister"}, environment);
    EXPECT_EQ(removed.status, 0) << removed.err;
    EXPECT_THAT(removed.out, StartsWith("agent: "));
    EXPECT_FALSE(std::filesystem::exists(home.root() / "config/autostart/velmora-agent.desktop"));
}

}  // namespace
}  // namespace corvel::clitest
