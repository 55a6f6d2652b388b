// The agent's cycle in this process, on a recorded machine whose recording changes between
// cycles, with a temporary data folder.
#include "agent/Agent.h"

#include "agent/InstanceLock.h"
#include "agent/MachineCopy.h"
#include "common/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Key;
using ::testing::Pair;
using testing::MachineCopy;

constexpr std::int64_t GB = 1000LL * 1000 * 1000;
const std::string rootID = "0E2C4A6E-8C0A-4E2C-A4E6-C8A0E2C4A6E8";
const std::string freeSpaceAlert = "volume.freeSpace|volume:" + rootID;

struct AgentRun {
    MachineCopy machine{"mac-studio-external-usb"};
    std::vector<std::string> log;
    std::unique_ptr<Agent> agent;

    AgentRun() {
        AgentOptions options;
        options.machine.replay = machine.folder();
        options.machine.dataFolder = machine.data();
        options.machine.environment = {};
        options.once = true;
        agent = std::make_unique<Agent>(options, [this](const std::string& line) { log.push_back(line); });
    }
    AgentStatus status() const { return *AgentFiles::read<AgentStatus>(agent->files().status()).value; }
};

TEST(Agent, CyclesTurnChangesIntoEventsAlertsAndFiles) {
    AgentRun run;
    const auto first = run.agent->runCycle();
    ASSERT_TRUE(first.monitored);
    // No previous snapshot: nothing counts as mounted, but every finding is new.
    EXPECT_THAT(first.refresh->events, Not(Contains(Field(&MonitorEvent::kind, MonitorEventKind::mounted))));
    EXPECT_THAT(first.refresh->events, Not(Contains(Field(&MonitorEvent::subjectID, freeSpaceAlert))));

    run.machine.edit([](Json& recording) {
        recording["capturedAt"] = "2026-11-02T10:30:00Z";
        MachineCopy::unmount(recording, "/Volumes/media");
        MachineCopy::setAvailable(recording, "/", 90 * GB);  // 9 % free: a warning
    });
    const auto second = run.agent->runCycle();
    EXPECT_THAT(second.refresh->events,
                ElementsAre(AllOf(Field(&MonitorEvent::kind, MonitorEventKind::unmounted),
                                  Field(&MonitorEvent::subjectName, "media")),
                            AllOf(Field(&MonitorEvent::subjectID, freeSpaceAlert),
                                  Field(&MonitorEvent::severity, Severity::warning))));

    // The same state once more alerts nothing; critical then does.
    run.machine.edit([](Json& recording) { recording["capturedAt"] = "2026-11-02T10:45:00Z"; });
    EXPECT_THAT(run.agent->runCycle().refresh->events, IsEmpty());
    run.machine.edit([](Json& recording) {
        recording["capturedAt"] = "2026-11-02T11:00:00Z";
        MachineCopy::setAvailable(recording, "/", 40 * GB);
    });
    EXPECT_THAT(run.agent->runCycle().refresh->events,
                ElementsAre(Field(&MonitorEvent::severity, Severity::critical)));

    const auto& files = run.agent->files();
    EXPECT_THAT(AgentFiles::read<AgentState>(files.state()).value->activeAlerts,
                Contains(Pair(freeSpaceAlert, Severity::critical)));
    EXPECT_EQ(AgentFiles::read<AgentInventory>(files.inventory()).value->snapshot.volumes.size(), 3u);
    const auto status = run.status();
    EXPECT_EQ(status.cycles, 4);
    EXPECT_EQ(status.lastCycleAt, ISO8601::parse("2026-11-02T11:00:00Z"));
    EXPECT_EQ(status.pid, ::getpid());
    JSONHistory<MonitorEvent> events(files.events(), AgentFiles::eventLimit);
    EXPECT_EQ(events.all().size(), first.refresh->events.size() + 3);
    HistoryStore history(HistoryStore::defaultURL(run.machine.data()));
    EXPECT_EQ(history.samples(rootID).size(), 4u);
    EXPECT_THAT(run.log, Contains(HasSubstr("notifications skipped")));
}

TEST(Agent, UnreadableStateStartsAfreshWithAWarning) {
    AgentRun run;
    AtomicFile::write(run.agent->files().state(), "{\"activeAlerts\": 7}");
    AtomicFile::write(run.agent->files().inventory(), "garbage");
    AtomicFile::write(run.agent->files().status(), "[");
    const auto report = run.agent->runCycle();
    EXPECT_TRUE(report.monitored);
    EXPECT_THAT(report.warnings, AllOf(Contains(HasSubstr("agent-state.json could not be read")),
                                       Contains(HasSubstr("agent-inventory.json could not be read")),
                                       Contains(HasSubstr("agent-status.json could not be read"))));
    EXPECT_FALSE(AgentFiles::read<AgentState>(run.agent->files().state()).problem);
    EXPECT_EQ(run.status().warnings, report.warnings);
}

TEST(Agent, ATimedOutDiskToolIsAWarningAndTheNextCycleRunsNormally) {
    AgentRun run;
    run.machine.edit([](Json& recording) {
        for (auto& command : recording["commands"])
            if (command["arguments"] == Json{"info", "-plist", "disk4"}) command = {{"executable", command["executable"]},
                                                                                 {"arguments", command["arguments"]},
                                                                                 {"timedOut", true}};
    });
    const auto slow = run.agent->runCycle();
    EXPECT_THAT(run.status().warnings, Contains(HasSubstr("Command timed out")));
    EXPECT_TRUE(slow.monitored);
    MachineCopy fresh("mac-studio-external-usb");
    std::filesystem::copy_file(fresh.folder() / "machine.json", run.machine.folder() / "machine.json",
                               std::filesystem::copy_options::overwrite_existing);
    run.agent->runCycle();
    EXPECT_THAT(run.status().warnings, IsEmpty());
}

TEST(Agent, MonitoringOffChecksNothing) {
    AgentRun run;
    AtomicFile::write(run.machine.data() / "settings.json", R"({"monitoringEnabled": false})");
    const auto report = run.agent->runCycle();
    EXPECT_FALSE(report.monitored);
    EXPECT_FALSE(std::filesystem::exists(run.agent->files().state()));
    EXPECT_FALSE(run.status().monitoringEnabled);
    EXPECT_THAT(run.log, Contains(HasSubstr("monitoring is off")));
}

TEST(InstanceLock, OneHolderAtATime) {
    AgentRun run;
    const auto path = run.agent->files().lock();
    EXPECT_FALSE(InstanceLock::holder(path));
    // Record locks belong to a process, so the second taker must be another one.
    auto lock = InstanceLock::acquire(path);
    ASSERT_TRUE(lock);
    const pid_t child = ::fork();
    if (child == 0) ::_exit(InstanceLock::acquire(path) ? 1 : 0);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a second process took the lock";
    const pid_t asker = ::fork();
    if (asker == 0) ::_exit(InstanceLock::holder(path) == ::getppid() ? 0 : 1);
    ::waitpid(asker, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the holder's pid was not reported";
}

}  // namespace
}  // namespace corvel
