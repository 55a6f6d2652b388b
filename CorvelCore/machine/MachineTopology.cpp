#include "machine/MachineTopology.h"

#include "topology/PlatformTopology.h"
#include "topology/TopologyDiscovery.h"

namespace corvel::MachineTopology {

TopologyReading read(Machine& machine, const StorageSnapshot& snapshot) {
    auto& runner = machine.runner(ToolTimeout::discovery);
    if (const auto* recording = machine.recording()) return TopologyDiscovery::replay(runner, *recording, snapshot);
    return PlatformTopology::discover(runner, snapshot);
}

}  // namespace corvel::MachineTopology
