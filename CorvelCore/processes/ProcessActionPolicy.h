// Whether an action may be offered for a process group at all, and if not, why. It never lets a
// person act on Velmora itself, on processes the system runs, on other users' processes, or on
// the few processes macOS cannot do without. Every front end asks it before offering an action,
// and the action code asks it again before acting.
//
//   auto decision = ProcessActionPolicy::decide(ProcessAction::quit, group, getpid());
//   if (!decision.allowed) show(*decision.reason);   // "This is Velmora itself."
#pragma once

#include "processes/ProcessAction.h"
#include "processes/ProcessGroup.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace corvel::ProcessActionPolicy {

struct Decision {
    bool allowed = false;
    std::optional<std::string> reason;  // absent when allowed

    bool operator==(const Decision&) const = default;
};

// Names compared exactly, case-sensitively, with the group's name.
const std::set<std::string>& protectedNames();

// The first rule that applies decides: our own process, then the system's and other users'
// processes, then the protected names; quit and force quit are then allowed, relaunch only for
// apps. Pure.
Decision decide(ProcessAction action, const ProcessGroup& group, std::int32_t ownPID);

CORVEL_JSON_RECORD(Decision, allowed, reason)

}  // namespace corvel::ProcessActionPolicy
