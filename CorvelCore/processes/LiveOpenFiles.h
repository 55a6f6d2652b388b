// The open-file lister of the machine this program runs on: /proc on Linux, lsof on macOS. One
// definition per platform under platform/<os>/; recorded machines use LsofOpenFiles instead.
//
//   auto lister = liveOpenFileListing(machine.runner(ToolTimeout::inspection));
#pragma once

#include "command/CommandRunning.h"
#include "processes/OpenFileListing.h"

#include <memory>

namespace corvel {

// `runner` is used only where the platform's lister is a program.
std::unique_ptr<OpenFileListing> liveOpenFileListing(CommandRunning& runner);

}  // namespace corvel
