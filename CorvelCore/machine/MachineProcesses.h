// The running processes of the machine being looked at, and the actions on them, wired the same
// way for every front end: this machine's sampler, the person's desktop applications, the data
// folder's action log, the platform's way of starting an app again. A recorded machine has no
// live processes, so it has none of these; asking anyway is a MachineError with replayText().
//
//   if (!MachineProcesses::isAvailable(machine)) say(MachineProcesses::replayText());
//   auto reading = MachineProcesses::read(machine, std::chrono::milliseconds(500));
//   auto matches = ProcessGrouping::find(reading.groups, "Safari");
//   auto result = MachineProcesses::perform(machine, ProcessAction::quit, matches.front(), reading);
#pragma once

#include "machine/Machine.h"
#include "processes/ProcessActions.h"
#include "processes/ProcessGroup.h"
#include "processes/ProcessGrouping.h"
#include "processes/ProcessSample.h"

#include <chrono>
#include <string>
#include <vector>

namespace corvel::MachineProcesses {

struct Reading {
    std::chrono::milliseconds interval{0};
    std::vector<ProcessSample> samples;
    std::vector<ProcessGroup> groups;  // every user's, in name order
};

bool isAvailable(const Machine& machine);
std::string replayText();

// The platform, the person running us, and on Linux the desktop applications of their XDG data
// folders.
ProcessGroupingContext groupingContext(const Machine& machine);

// One measurement over `interval` (none: CPU shares stay 0), grouped. Throws MachineError in replay.
Reading read(Machine& machine, std::chrono::milliseconds interval);

// Asks the policy, and if it allows, acts on `group` as `reading` sampled it and appends the
// record to the data folder's log. Throws MachineError in replay.
ProcessActionResult perform(Machine& machine, ProcessAction action, const ProcessGroup& group, const Reading& reading,
                            const ProcessActionTiming& timing = {});

// Our own pid, which the policy never lets anyone act on.
std::int32_t ownPID();

}  // namespace corvel::MachineProcesses
