// Which open-file lister reads the machine being looked at: a recorded machine replays lsof's
// recorded output whatever its platform; this machine uses its own platform's lister (/proc on
// Linux, lsof on macOS).
//
//   auto lister = MachineOpenFiles::lister(machine);
//   auto usages = lister->usages("/Volumes/Backup");
#pragma once

#include "machine/Machine.h"
#include "processes/OpenFileListing.h"

#include <memory>

namespace corvel::MachineOpenFiles {

std::unique_ptr<OpenFileListing> lister(Machine& machine);

}  // namespace corvel::MachineOpenFiles
