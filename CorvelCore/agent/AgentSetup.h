// How a front end registers the background agent for the person running it: the host (their own
// home and configuration folders, the machine's runner, which tools are there) and the launch
// (which velmora to start, with which data folder and interval). The command line and the desktop
// application both start with `--agent-register` / `--agent-unregister`, and must register the
// same agent the same way.
//
//   auto host = AgentSetup::hostFor(machine);
//   auto outcome = AgentRegistration::registerAgent(host, AgentSetup::launchFor(machine, program));
#pragma once

#include "agent/AgentLaunchFiles.h"
#include "agent/AgentRegistration.h"
#include "machine/Machine.h"

#include <optional>
#include <string>

namespace corvel::AgentSetup {

// Registration is for the person running us, whatever machine is being read; tools run through
// the machine's runner, so a replay never touches the real service manager.
AgentHost hostFor(Machine& machine);

// `program` is the velmora command line the agent runs; interval from the user's settings.
AgentLaunch launchFor(Machine& machine, const std::string& program);

// The command line that belongs to another of our programs (the desktop application): installed
// beside it, or, in a build folder, in the sibling cli/ folder. Absent when neither exists.
std::optional<std::string> commandLineBeside(const std::string& program);

// The running program's own file, which is what a login item or service must start. Throws
// FileError when the system will not say.
std::string runningProgram();

// Registers or unregisters and answers with the one line people see. Throws what
// AgentRegistration throws.
AgentRegistration::Outcome change(Machine& machine, const std::string& program, bool registering);

}  // namespace corvel::AgentSetup
