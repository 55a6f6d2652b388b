// The live machine's processes, on child processes this test starts and nothing else. Each child
// runs a copy of sleep under a name of its own, so that its group holds only that child even
// while other programs run sleep on this machine.
#include "common/PathText.h"
#include "processes/DesktopApplications.h"
#include "processes/LocalProcesses.h"
#include "processes/ProcessActions.h"
#include "processes/ProcessGrouping.h"
#include "processes/ProcessSampler.h"

#include "support/ChildProcess.h"
#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace corvel {
namespace {

using ::testing::AllOf;
using testing::ChildProcess;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using testing::eventually;
using ::testing::Field;
using ::testing::Ge;
using ::testing::Gt;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Lt;
using Status = ProcessActionResult::Status;

std::string sleepProgram() {
    for (const char* path : {"/bin/sleep", "/usr/bin/sleep"})
        if (::access(path, X_OK) == 0) return path;
    return "sleep";
}

// A copy of sleep called `name`, unique to this test run.
std::string sleeperCopy(const testing::TemporaryFolder& folder, const std::string& name) {
    const auto path = folder.path(name + "-" + std::to_string(::getpid()));
    std::filesystem::copy_file(sleepProgram(), path);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

std::optional<ProcessSample> sampleOf(LocalProcesses& local, std::int32_t pid) {
    for (auto& sample : local.sampleAll())
        if (sample.pid == pid) return sample;
    return std::nullopt;
}

// Waits until the child runs `program` (it starts as a copy of us and execs a moment later).
bool runs(LocalProcesses& local, const ChildProcess& child, const std::string& program) {
    return eventually([&] {
        const auto sample = sampleOf(local, child.pid());
        return sample && sample->executablePath == program;
    });
}

ProcessGroupingContext context(std::vector<DesktopEntry> desktop = {}) {
    return {hostPlatform(), LocalProcesses::currentUid(), std::move(desktop)};
}

struct Found {
    ProcessGroup group;
    std::vector<ProcessTarget> targets;
};

Found findGroup(LocalProcesses& local, const std::string& name, const ProcessGroupingContext& grouping) {
    const auto samples = local.sampleAll();
    const auto matches = ProcessGrouping::find(ProcessGrouping::group(samples, grouping), name);
    if (matches.size() != 1) {
        ADD_FAILURE() << matches.size() << " groups named " << name;
        return {};
    }
    return {matches.front(), ProcessGrouping::targets(matches.front(), samples)};
}

const ProcessActionTiming testTiming{std::chrono::seconds(5), std::chrono::seconds(5), std::chrono::milliseconds(5)};

// A temporary folder for the copies of sleep and the action log; apps start through a runner
// that must never be asked.
class LiveProcesses : public ::testing::Test {
protected:
    void TearDown() override { EXPECT_THAT(runner.calls, ::testing::IsEmpty()); }

    ProcessActionResult perform(ProcessAction action, const Found& found, ProcessActionTiming timing = testTiming) {
        return ProcessActions::perform({action, found.group, found.targets, LocalProcesses::ownPID()}, local, launcher,
                                       log, currentTime(), timing);
    }

    testing::TemporaryFolder folder;
    LocalProcesses local;
    testing::ScriptedRunner runner;
    AppLauncher launcher{hostPlatform(), runner, local};
    ProcessActionLog log{folder.root() / "data"};
};

TEST_F(LiveProcesses, QuitsAndForceQuitsItsOwnChildrenAndRecordsBoth) {
    const auto program = sleeperCopy(folder, "corvel-sleeper");
    const auto name = lastComponent(program);

    // Quit sends the polite signal, force quit the one that cannot be ignored.
    std::vector<std::int32_t> pids;
    for (const auto& [action, signal] :
         {std::pair{ProcessAction::quit, SIGTERM}, std::pair{ProcessAction::forceQuit, SIGKILL}}) {
        ChildProcess child({program, "30"});
        ASSERT_TRUE(runs(local, child, program));
        const auto found = findGroup(local, name, context());
        EXPECT_THAT(found.group.pids, ElementsAre(child.pid()));
        EXPECT_EQ(found.group.kind, ProcessGroup::Kind::process);
        EXPECT_TRUE(found.group.isCurrentUser);
        const auto result = perform(action, found);
        EXPECT_EQ(result.status, Status::done) << result.record->outcome;
        const auto end = child.waitFor(std::chrono::seconds(2));
        ASSERT_TRUE(end);
        EXPECT_TRUE(WIFSIGNALED(*end) && WTERMSIG(*end) == signal);
        pids.push_back(child.pid());
    }
    EXPECT_THAT(ProcessActionLog(folder.root() / "data").all(),
                ElementsAre(AllOf(Field(&ProcessActionRecord::action, ProcessAction::quit),
                                  Field(&ProcessActionRecord::name, name),
                                  Field(&ProcessActionRecord::pids, ElementsAre(pids[0])),
                                  Field(&ProcessActionRecord::outcome, "Quit: 1 process ended.")),
                            AllOf(Field(&ProcessActionRecord::action, ProcessAction::forceQuit),
                                  Field(&ProcessActionRecord::pids, ElementsAre(pids[1])),
                                  Field(&ProcessActionRecord::outcome, "Force quit: 1 process ended."))));
}

TEST_F(LiveProcesses, ChildIgnoringThePoliteSignalIsReportedStillRunning) {
    const auto program = sleeperCopy(folder, "corvel-stubborn");
    // An ignored signal stays ignored across exec.
    ChildProcess stubborn({"/bin/sh", "-c", "trap '' TERM; exec \"$0\" 30", program});
    ASSERT_TRUE(runs(local, stubborn, program));
    const auto found = findGroup(local, lastComponent(program), context());
    ProcessActionTiming shortWait = testTiming;
    shortWait.quitWait = std::chrono::milliseconds(200);
    const auto result = perform(ProcessAction::quit, found, shortWait);
    EXPECT_EQ(result.status, Status::stillRunning);
    EXPECT_THAT(result.stillRunning, ElementsAre(stubborn.pid()));
    EXPECT_EQ(result.record->outcome,
              "Quit requested; still running after 0.2 s: pid " + std::to_string(stubborn.pid()) + ".");
    EXPECT_TRUE(stubborn.isRunning());
}

TEST_F(LiveProcesses, PidOfAnotherStartIsNeverSignalled) {
    const auto program = sleeperCopy(folder, "corvel-reused");
    ChildProcess child({program, "30"});
    ASSERT_TRUE(runs(local, child, program));
    const auto sample = sampleOf(local, child.pid());
    ASSERT_TRUE(sample);
    const ProcessTarget stale{child.pid(), sample->startTime + 1};
    EXPECT_FALSE(local.isRunning(stale));
    EXPECT_EQ(local.send(stale, ProcessSignal::kill), SignalResult::gone);
    EXPECT_FALSE(child.waitFor(std::chrono::milliseconds(50)));
    EXPECT_TRUE(local.isRunning({child.pid(), sample->startTime}));
}

TEST(LocalProcesses, SamplesItsOwnProcessWithSaneFigures) {
    std::atomic<bool> stop{false};
    // One busy thread through the whole interval.
    std::thread busy([&stop] {
        volatile std::uint64_t spin = 0;
        while (!stop.load(std::memory_order_relaxed)) spin = spin + 1;
    });
    LocalProcesses local;
    const auto samples = ProcessSampler::measure(local, std::chrono::milliseconds(300));
    stop = true;
    busy.join();
    const auto self = std::find_if(samples.begin(), samples.end(),
                                   [](const ProcessSample& sample) { return sample.pid == LocalProcesses::ownPID(); });
    ASSERT_NE(self, samples.end());
    const auto cores = std::max(1u, std::thread::hardware_concurrency());
    EXPECT_THAT(self->cpuPercent, AllOf(Gt(20.0), Le(100.0 * cores + 25)));
    EXPECT_THAT(self->memoryBytes, AllOf(Gt(1'000'000), Lt(std::int64_t{16} << 30)));
    EXPECT_EQ(self->memoryKind, hostPlatform() == Platform::macos ? MemoryKind::footprint : MemoryKind::proportional);
    EXPECT_THAT(self->executablePath, ::testing::Optional(EndsWith("processes_tests")));
    EXPECT_EQ(self->uid, LocalProcesses::currentUid());
    EXPECT_EQ(self->parentPid, static_cast<std::int32_t>(::getppid()));
    EXPECT_FALSE(self->isKernelThread);
    EXPECT_THAT(samples.size(), Ge(3u));
}

TEST_F(LiveProcesses, RelaunchStartsTheDesktopCommandDetached) {
    if (hostPlatform() != Platform::linux) GTEST_SKIP() << "desktop entries are how Linux starts apps";
    const auto program = sleeperCopy(folder, "corvel-app");
    // A duration no other process on the machine would sleep for, so the new one is recognisable.
    const std::string duration = "31.25";
    folder.write(
        "share/applications/corvel-app.desktop",
        "[Desktop Entry]\nType=Application\nName=Corvel Test App\nExec=\"" + program + "\" " + duration + " %U\n");
    const Environment environment{{"XDG_DATA_HOME", folder.path("share")},
                                  {"XDG_DATA_DIRS", folder.path("no-system-entries")}};
    const auto desktop = DesktopApplications::read(environment, folder.path());

    ChildProcess original({program, "30"});
    ASSERT_TRUE(runs(local, original, program));
    const auto found = findGroup(local, "Corvel Test App", context(desktop));
    EXPECT_EQ(found.group.kind, ProcessGroup::Kind::app);
    EXPECT_EQ(found.group.appPath, folder.path("share/applications/corvel-app.desktop"));

    const auto result = perform(ProcessAction::relaunch, found);
    ASSERT_EQ(result.status, Status::done) << result.record->outcome;
    ASSERT_TRUE(result.relaunchedPID);
    EXPECT_TRUE(original.waitFor(std::chrono::seconds(2)));
    EXPECT_THAT(result.record->outcome, HasSubstr("Started again (pid " + std::to_string(*result.relaunchedPID)));

    // The new process runs the entry's command in a session of its own, and is not our child.
    std::optional<ProcessSample> relaunched;
    ASSERT_TRUE(eventually([&] {
        relaunched = sampleOf(local, *result.relaunchedPID);
        return relaunched && relaunched->executablePath == program;
    }));
    EXPECT_NE(relaunched->parentPid, LocalProcesses::ownPID());
    EXPECT_NE(::getsid(*result.relaunchedPID), ::getsid(0));
    // It is the test's to end.
    EXPECT_EQ(local.send({relaunched->pid, relaunched->startTime}, ProcessSignal::kill), SignalResult::sent);
    EXPECT_TRUE(eventually([&] { return !local.isRunning({relaunched->pid, relaunched->startTime}); }));
}

TEST(LocalProcesses, StartingAMissingProgramSaysWhy) {
    LocalProcesses local;
    try {
        local.startDetached({"corvel-no-such-program-anywhere"});
        ADD_FAILURE() << "started a program that does not exist";
    } catch (const ProcessLaunchError& error) {
        EXPECT_THAT(error.what(), HasSubstr("corvel-no-such-program-anywhere: not found in PATH"));
    }
    testing::TemporaryFolder folder;
    const auto notExecutable = folder.write("script", "#!/bin/sh\n");
    EXPECT_THROW(local.startDetached({notExecutable}), ProcessLaunchError);
}

}  // namespace
}  // namespace corvel
