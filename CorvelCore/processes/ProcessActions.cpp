#include "processes/ProcessActions.h"

#include "command/CommandError.h"

#include <thread>

namespace corvel::ProcessActions {
namespace {

using Status = ProcessActionResult::Status;

struct Signalled {
    std::vector<ProcessTarget> sent;
    std::vector<std::int32_t> gone;
    std::vector<std::int32_t> denied;
};

Signalled signalAll(const std::vector<ProcessTarget>& targets, ProcessSignal signal, ProcessControlling& control) {
    Signalled result;
    for (const auto& target : targets) {
        switch (control.send(target, signal)) {
            case SignalResult::sent:
                result.sent.push_back(target);
                break;
            case SignalResult::gone:
                result.gone.push_back(target.pid);
                break;
            case SignalResult::denied:
                result.denied.push_back(target.pid);
                break;
        }
    }
    return result;
}

// The pids still running when the wait is over (or as soon as none is).
std::vector<std::int32_t> waitForEnd(const std::vector<ProcessTarget>& targets, ProcessControlling& control,
                                     std::chrono::milliseconds wait, std::chrono::milliseconds poll) {
    const auto deadline = std::chrono::steady_clock::now() + wait;
    for (;;) {
        std::vector<std::int32_t> running;
        for (const auto& target : targets)
            if (control.isRunning(target)) running.push_back(target.pid);
        if (running.empty() || std::chrono::steady_clock::now() >= deadline) return running;
        std::this_thread::sleep_for(poll);
    }
}

std::string processes(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " process" : " processes");
}

std::string pidList(const std::vector<std::int32_t>& pids) {
    std::string text = pids.size() == 1 ? "pid " : "pids ";
    for (std::size_t i = 0; i < pids.size(); ++i) text += (i ? ", " : "") + std::to_string(pids[i]);
    return text;
}

// "10 s", "0.2 s"
std::string duration(std::chrono::milliseconds wait) {
    const auto count = wait.count();
    if (count % 1000 == 0) return std::to_string(count / 1000) + " s";
    auto text = std::to_string(count / 1000) + "." + std::to_string(count % 1000 + 1000).substr(1);
    while (text.back() == '0') text.pop_back();
    return text + " s";
}

}  // namespace

ProcessActionResult perform(const ProcessActionRequest& request, ProcessControlling& control, AppLaunching& launcher,
                            ProcessActionLog& log, TimePoint now, const ProcessActionTiming& timing) {
    ProcessActionResult result;
    result.decision = ProcessActionPolicy::decide(request.action, request.group, request.ownPID);
    if (!result.decision.allowed) return result;

    const bool force = request.action == ProcessAction::forceQuit;
    const std::string verb = force ? "Force quit" : "Quit";
    const auto signalled = signalAll(request.targets, force ? ProcessSignal::kill : ProcessSignal::terminate, control);
    const auto wait = force ? timing.killWait : timing.quitWait;
    result.stillRunning = waitForEnd(signalled.sent, control, wait, timing.poll);

    std::string outcome;
    if (signalled.sent.empty() && signalled.denied.empty()) {
        result.status = Status::alreadyGone;
        outcome = "Already gone: no process was running.";
    } else if (!result.stillRunning.empty()) {
        result.status = Status::stillRunning;
        outcome =
            verb + " requested; still running after " + duration(wait) + ": " + pidList(result.stillRunning) + ".";
    } else {
        result.status = Status::done;
        outcome = verb + ": " + processes(signalled.sent.size() - result.stillRunning.size()) + " ended.";
    }
    if (!signalled.gone.empty() && result.status != Status::alreadyGone)
        outcome += " " + processes(signalled.gone.size()) + " had already ended.";
    if (!signalled.denied.empty()) {
        result.status = Status::failed;
        outcome += " Not permitted to signal " + pidList(signalled.denied) + ".";
    }

    if (request.action == ProcessAction::relaunch) {
        if (result.status == Status::done || result.status == Status::alreadyGone) {
            try {
                result.relaunchedPID = launcher.launch(request.group);
                outcome += " Started again" +
                           (result.relaunchedPID ? " (pid " + std::to_string(*result.relaunchedPID) + ")" : "") + ".";
                result.status = Status::done;
            } catch (const CommandError& error) {
                result.status = Status::failed;
                outcome += " Could not start it again: " + error.description();
            } catch (const std::exception& error) {
                result.status = Status::failed;
                outcome += " Could not start it again: " + std::string(error.what());
            }
        } else {
            outcome += " Not started again.";
        }
    }

    std::vector<std::int32_t> pids;
    for (const auto& target : request.targets) pids.push_back(target.pid);
    result.record = ProcessActionRecord(now, request.action, request.group.name, std::move(pids), outcome);
    try {
        log.append(*result.record);
    } catch (const FileError& error) {
        result.logProblem = error.what();
    }
    return result;
}

}  // namespace corvel::ProcessActions
