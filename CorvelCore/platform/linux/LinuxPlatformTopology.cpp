#include "topology/PlatformTopology.h"
#include "topology/SysfsTree.h"
#include "topology/TopologyDiscovery.h"

namespace corvel::PlatformTopology {

TopologyReading discover(CommandRunning&, const StorageSnapshot& snapshot) {
    SysfsTree sysfs("/");
    return TopologyDiscovery::fromSysfs(sysfs, snapshot.disks);
}

}  // namespace corvel::PlatformTopology
