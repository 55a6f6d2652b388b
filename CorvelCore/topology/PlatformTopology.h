// Topology discovery on the machine this program runs on. One implementation per platform lives
// under platform/<os>/, chosen by the build: sysfs on Linux; the hardware-report tool and the I/O
// registry on macOS.
#pragma once

#include "command/CommandRunning.h"
#include "storage/StorageSnapshot.h"
#include "topology/TopologyReading.h"

namespace corvel::PlatformTopology {

// Never throws: what cannot be read becomes a warning or a disk that was not located.
TopologyReading discover(CommandRunning& runner, const StorageSnapshot& snapshot);

}  // namespace corvel::PlatformTopology
