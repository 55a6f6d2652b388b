#include "processes/ProcessActions.h"

#include "support/ScriptedRunner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Optional;
using Status = ProcessActionResult::Status;

// Processes that behave as told: end on the polite signal, ignore it, are gone already, or
// belong to someone else.
class ScriptedProcesses : public ProcessControlling {
public:
    enum class Behaviour { endsWhenAsked, ignoresTerminate, gone, foreign };

    std::map<std::int32_t, Behaviour> behaviour;
    std::vector<std::pair<std::int32_t, ProcessSignal>> sent;
    std::vector<std::vector<std::string>> started;

    SignalResult send(const ProcessTarget& target, ProcessSignal signal) override {
        switch (behaviour.at(target.pid)) {
            case Behaviour::gone:
                return SignalResult::gone;
            case Behaviour::foreign:
                return SignalResult::denied;
            default:
                break;
        }
        sent.emplace_back(target.pid, signal);
        if (signal == ProcessSignal::kill || behaviour[target.pid] == Behaviour::endsWhenAsked)
            ended_.push_back(target.pid);
        return SignalResult::sent;
    }
    bool isRunning(const ProcessTarget& target) override {
        return behaviour.at(target.pid) != Behaviour::gone &&
               std::find(ended_.begin(), ended_.end(), target.pid) == ended_.end();
    }
    std::int32_t startDetached(const std::vector<std::string>& arguments) override {
        started.push_back(arguments);
        return 777;
    }

private:
    std::vector<std::int32_t> ended_;
};

class ScriptedLauncher : public AppLaunching {
public:
    std::optional<std::int32_t> launch(const ProcessGroup& group) override {
        launched.push_back(group.name);
        if (failure) throw ProcessLaunchError(*failure);
        return 900;
    }
    std::vector<std::string> launched;
    std::optional<std::string> failure;
};

using Behaviour = ScriptedProcesses::Behaviour;

ProcessGroup userGroup(std::vector<std::int32_t> pids, std::optional<std::string> appPath = std::nullopt) {
    ProcessGroup group;
    group.name = "Editor";
    group.id = "501:Editor";
    group.kind = appPath ? ProcessGroup::Kind::app : ProcessGroup::Kind::process;
    group.appPath = std::move(appPath);
    group.isCurrentUser = true;
    group.pids = std::move(pids);
    return group;
}

ProcessActionRequest request(ProcessAction action, const ProcessGroup& group) {
    std::vector<ProcessTarget> targets;
    for (const auto pid : group.pids) targets.push_back({pid, 1});
    return {action, group, targets, 1};
}

const TimePoint now = *ISO8601::parse("2026-11-02T09:30:00Z");
const ProcessActionTiming quick{std::chrono::milliseconds(50), std::chrono::milliseconds(20),
                                std::chrono::milliseconds(1)};

TEST(ProcessActions, OutcomesOfEachKindAreRecorded) {
    struct Case {
        const char* title;
        ProcessAction action;
        std::map<std::int32_t, Behaviour> processes;
        Status status;
        std::string outcome;
        std::vector<std::int32_t> stillRunning;
    };
    const auto ends = Behaviour::endsWhenAsked, ignores = Behaviour::ignoresTerminate, gone = Behaviour::gone;
    const auto quit = ProcessAction::quit, force = ProcessAction::forceQuit;
    // clang-format off
    const Case cases[] = {
        {"all end", quit, {{10, ends}, {11, ends}}, Status::done, "Quit: 2 processes ended.", {}},
        {"one was gone", quit, {{10, ends}, {11, gone}}, Status::done,
         "Quit: 1 process ended. 1 process had already ended.", {}},
        {"all were gone", quit, {{10, gone}}, Status::alreadyGone, "Already gone: no process was running.", {}},
        {"ignores the polite signal", quit, {{10, ends}, {11, ignores}}, Status::stillRunning,
         "Quit requested; still running after 0.05 s: pid 11.", {11}},
        {"force quit ends it", force, {{11, ignores}}, Status::done, "Force quit: 1 process ended.", {}},
        {"not permitted", force, {{10, ends}, {12, Behaviour::foreign}}, Status::failed,
         "Force quit: 1 process ended. Not permitted to signal pid 12.", {}}};
    // clang-format on
    for (const auto& test : cases) {
        testing::TemporaryFolder data;
        ProcessActionLog log(data.root());
        ScriptedProcesses control;
        control.behaviour = test.processes;
        ScriptedLauncher launcher;
        std::vector<std::int32_t> pids;
        for (const auto& [pid, ignored] : test.processes) pids.push_back(pid);

        const auto result =
            ProcessActions::perform(request(test.action, userGroup(pids)), control, launcher, log, now, quick);
        EXPECT_EQ(result.status, test.status) << test.title;
        EXPECT_EQ(result.stillRunning, test.stillRunning) << test.title;
        ASSERT_TRUE(result.record) << test.title;
        EXPECT_EQ(result.record->outcome, test.outcome) << test.title;
        const auto signal = test.action == ProcessAction::forceQuit ? ProcessSignal::kill : ProcessSignal::terminate;
        for (const auto& [pid, sentSignal] : control.sent) EXPECT_EQ(sentSignal, signal) << test.title;
        // Read back from the file, not from memory.
        EXPECT_THAT(ProcessActionLog(data.root()).all(),
                    ElementsAre(AllOf(
                        Field(&ProcessActionRecord::action, test.action), Field(&ProcessActionRecord::name, "Editor"),
                        Field(&ProcessActionRecord::pids, pids), Field(&ProcessActionRecord::outcome, test.outcome),
                        Field(&ProcessActionRecord::date, now))))
            << test.title;
        EXPECT_THAT(launcher.launched, IsEmpty());
    }
}

TEST(ProcessActions, RefusalSignalsNothingAndRecordsNothing) {
    testing::TemporaryFolder data;
    ProcessActionLog log(data.root());
    ScriptedProcesses control;
    control.behaviour = {{1, Behaviour::endsWhenAsked}, {10, Behaviour::endsWhenAsked}};
    ScriptedLauncher launcher;
    // Our own pid is in the group.
    const auto own = ProcessActions::perform(request(ProcessAction::forceQuit, userGroup({1, 10})), control, launcher,
                                             log, now, quick);
    EXPECT_EQ(own.status, Status::refused);
    EXPECT_EQ(own.decision.reason, "This is Velmora itself.");
    // A plain process cannot be relaunched, and is not quit on the way to finding out.
    const auto relaunch =
        ProcessActions::perform(request(ProcessAction::relaunch, userGroup({10})), control, launcher, log, now, quick);
    EXPECT_EQ(relaunch.decision.reason, "Only apps can be relaunched.");
    EXPECT_EQ(relaunch.record, std::nullopt);
    EXPECT_THAT(control.sent, IsEmpty());
    EXPECT_THAT(log.all(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(data.root() / "process-actions.json"));
}

TEST(ProcessActions, RelaunchStartsTheAppOnlyOnceItHasEnded) {
    testing::TemporaryFolder data;
    ProcessActionLog log(data.root());
    const auto app = userGroup({10}, "/usr/share/applications/editor.desktop");

    ScriptedProcesses ends;
    ends.behaviour = {{10, Behaviour::endsWhenAsked}};
    ScriptedLauncher launcher;
    const auto done = ProcessActions::perform(request(ProcessAction::relaunch, app), ends, launcher, log, now, quick);
    EXPECT_EQ(done.status, Status::done);
    EXPECT_EQ(done.relaunchedPID, 900);
    EXPECT_EQ(done.record->outcome, "Quit: 1 process ended. Started again (pid 900).");

    ScriptedProcesses stubborn;
    stubborn.behaviour = {{10, Behaviour::ignoresTerminate}};
    const auto kept =
        ProcessActions::perform(request(ProcessAction::relaunch, app), stubborn, launcher, log, now, quick);
    EXPECT_EQ(kept.status, Status::stillRunning);
    EXPECT_EQ(kept.record->outcome, "Quit requested; still running after 0.05 s: pid 10. Not started again.");

    ScriptedProcesses gone;
    gone.behaviour = {{10, Behaviour::gone}};
    launcher.failure = "cannot start editor: not found in PATH";
    const auto failed = ProcessActions::perform(request(ProcessAction::relaunch, app), gone, launcher, log, now, quick);
    EXPECT_EQ(failed.status, Status::failed);
    EXPECT_EQ(failed.record->outcome,
              "Already gone: no process was running. Could not start it again: cannot start editor: not found in PATH");

    // Launched after the first quit and after the third (already gone), never while it still ran.
    EXPECT_THAT(launcher.launched, ElementsAre("Editor", "Editor"));
    EXPECT_EQ(log.all().size(), 3u);
}

TEST(ProcessActions, UnsavedRecordIsReportedNotLost) {
    testing::TemporaryFolder data;
    data.write("blocked", "a file where the data folder should be");
    ProcessActionLog log(data.root() / "blocked");
    ScriptedProcesses control;
    control.behaviour = {{10, Behaviour::endsWhenAsked}};
    ScriptedLauncher launcher;
    const auto result =
        ProcessActions::perform(request(ProcessAction::quit, userGroup({10})), control, launcher, log, now, quick);
    EXPECT_EQ(result.status, Status::done);
    EXPECT_THAT(result.logProblem, Optional(::testing::HasSubstr("blocked")));
}

TEST(ProcessActionRecord, NewRecordsGetTheirOwnId) {
    const ProcessActionRecord first(now, ProcessAction::forceQuit, "node", {10, 11}, "Force quit: 2 processes ended.");
    const ProcessActionRecord second(now, ProcessAction::forceQuit, "node", {10, 11}, "Force quit: 2 processes ended.");
    EXPECT_NE(first.id, second.id);
    EXPECT_EQ(first.id.size(), 36u);
}

TEST(AppLauncher, MacOpensTheBundleUnderItsPolicy) {
    testing::ScriptedRunner runner;
    runner.answer("/usr/bin/open", {"-a", "/Applications/Safari.app"}, std::string());
    ScriptedProcesses control;
    AppLauncher launcher(Platform::macos, runner, control);
    auto safari = userGroup({10}, "/Applications/Safari.app");
    EXPECT_EQ(launcher.launch(safari), std::nullopt);
    EXPECT_THAT(runner.calls,
                ElementsAre(testing::ScriptedRunner::Call{"/usr/bin/open", {"-a", "/Applications/Safari.app"}}));
    EXPECT_FALSE(AppLauncher::openPolicy().permits({"/Applications/Safari.app"}));
    EXPECT_THAT(control.started, IsEmpty());
}

TEST(AppLauncher, LinuxStartsTheDesktopCommandElseTheProgram) {
    testing::TemporaryFolder folder;
    const auto entry = folder.write("editor.desktop",
                                    "[Desktop Entry]\nType=Application\nName=Editor\nExec=env A=1 editor --new %F\n");
    auto app = userGroup({10}, entry);
    app.executablePath = "/usr/bin/editor-bin";
    testing::ScriptedRunner runner;
    ScriptedProcesses control;
    AppLauncher launcher(Platform::linux, runner, control);
    EXPECT_EQ(launcher.launch(app), 777);

    auto missing = app;
    missing.appPath = folder.path("gone.desktop");
    EXPECT_EQ(launcher.launch(missing), 777);
    EXPECT_THAT(control.started,
                ElementsAre(ElementsAre("env", "A=1", "editor", "--new"), ElementsAre("/usr/bin/editor-bin")));

    missing.executablePath.reset();
    EXPECT_THROW(launcher.launch(missing), ProcessLaunchError);
    EXPECT_THROW(launcher.launch(userGroup({10})), ProcessLaunchError);
    EXPECT_THAT(runner.calls, IsEmpty());
}

}  // namespace
}  // namespace corvel
