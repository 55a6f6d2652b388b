// Carries out one confirmed action on a process group and records it. The policy is asked again
// first, so no caller can act on what it refuses. Quit sends the polite termination signal and
// waits (10 s) for every process to end; force quit sends the kill signal; relaunch quits, and
// once the app has ended starts it again. Every action taken, also on processes that had
// already ended, leaves one record in the log; a refusal leaves none, because nothing was done.
//
//   auto result = ProcessActions::perform({ProcessAction::quit, group, targets, getpid()},
//                                         local, launcher, log, machine.now());
//   show(result.record->outcome);   // "Quit: 2 processes ended."
#pragma once

#include "common/EnumTable.h"
#include "common/ISO8601.h"
#include "processes/AppLauncher.h"
#include "processes/ProcessActionLog.h"
#include "processes/ProcessActionPolicy.h"
#include "processes/ProcessControlling.h"
#include "processes/ProcessGroup.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct ProcessActionRequest {
    ProcessAction action = ProcessAction::quit;
    ProcessGroup group;
    std::vector<ProcessTarget> targets;  // the group's processes as sampled
    std::int32_t ownPID = 0;
};

struct ProcessActionTiming {
    // How long quit waits for the processes to end before saying they still run.
    std::chrono::milliseconds quitWait{10'000};
    // How long force quit waits for the system to finish them off.
    std::chrono::milliseconds killWait{2'000};
    std::chrono::milliseconds poll{25};
};

struct ProcessActionResult {
    enum class Status {
        refused,       // the policy said no; nothing was done or recorded
        done,          // every process ended (and the app started again, for relaunch)
        alreadyGone,   // no process was running any more
        stillRunning,  // some outlived the wait
        failed,        // the system refused a signal, or the app could not start again
    };

    Status status = Status::refused;
    ProcessActionPolicy::Decision decision;
    std::optional<ProcessActionRecord> record;
    std::vector<std::int32_t> stillRunning;
    std::optional<std::int32_t> relaunchedPID;
    // Why the record could not be saved (the action itself happened).
    std::optional<std::string> logProblem;
};

template <>
struct EnumTable<ProcessActionResult::Status> {
    static constexpr std::array<EnumEntry<ProcessActionResult::Status>, 5> entries{{
        {ProcessActionResult::Status::refused, "refused", "refused", Tone::caution},
        {ProcessActionResult::Status::done, "done", "done", Tone::good},
        {ProcessActionResult::Status::alreadyGone, "alreadyGone", "already gone", Tone::notice},
        {ProcessActionResult::Status::stillRunning, "stillRunning", "still running", Tone::caution},
        {ProcessActionResult::Status::failed, "failed", "failed", Tone::bad},
    }};
};
CORVEL_ENUM_JSON(ProcessActionResult::Status)
CORVEL_JSON_RECORD(ProcessActionResult, status, decision, record, stillRunning, relaunchedPID, logProblem)

namespace ProcessActions {

ProcessActionResult perform(const ProcessActionRequest& request, ProcessControlling& control, AppLaunching& launcher,
                            ProcessActionLog& log, TimePoint now, const ProcessActionTiming& timing = {});

}  // namespace ProcessActions
}  // namespace corvel
