// Docker as the machine being looked at shows it: the live machine through its file system and the
// docker program, a recorded machine through its recording, with the same client either way.
//
//   DockerReading docker = DockerReading::read(machine, snapshot);
//   if (!docker.executable) { /* "Docker CLI not found" */ }
#pragma once

#include "common/Platform.h"
#include "docker/DockerInventory.h"
#include "machine/Machine.h"
#include "storage/StorageSnapshot.h"

#include <optional>
#include <string>

namespace corvel {

struct DockerReading {
    Platform platform = Platform::macos;    // the machine read, live or recorded
    std::optional<std::string> executable;  // none: the docker program is not installed
    std::optional<DockerInventory> inventory;

    // Never throws for Docker's sake (failures land in the inventory's errors); a malformed
    // recording is a MachineError naming it.
    static DockerReading read(Machine& machine, const StorageSnapshot& snapshot);

    // What to say when the engine does not answer. The second sentence is left out when no disk
    // image was found: there is nothing measured then.
    static std::string engineNotRunningTitle();
    static std::string engineNotRunningHint(Platform platform, bool imageFound);
};

}  // namespace corvel
