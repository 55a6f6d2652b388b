#include "platform/macos/IORegistryReader.h"
#include "topology/MacTopologyReader.h"
#include "topology/PlatformTopology.h"

namespace corvel::PlatformTopology {

TopologyReading discover(CommandRunning& runner, const StorageSnapshot& snapshot) {
    IORegistryReader registry;
    return MacTopologyReader::discover(runner, &registry, snapshot.disks);
}

}  // namespace corvel::PlatformTopology
