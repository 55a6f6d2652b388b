// What a plan to move Docker's data reads from the machine being looked at: the Docker inventory
// (is the engine running, where is its disk image or data root and what does it occupy), the
// volumes holding the data and the target, and on this machine the target folder itself. A
// recorded machine holds no file tree, so there the target is only matched against its volumes.
//
//   DockerMoveFacts facts = dockerMoveFacts(machine, "/Volumes/Projects");
//   MigrationPlan plan = DockerMovePlanner::plan(facts);
#pragma once

#include "machine/Machine.h"
#include "migration/DockerMovePlanner.h"

#include <string>

namespace corvel {

// `target` is a normal absolute path. Never throws for Docker's sake; a malformed recording is a
// MachineError naming it.
DockerMoveFacts dockerMoveFacts(Machine& machine, const std::string& target);

}  // namespace corvel
