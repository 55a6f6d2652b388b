#include "hardware/HardwareDiscovery.h"
#include "hardware/PlatformHardware.h"
#include "topology/SysfsTree.h"

namespace corvel::PlatformHardware {

HardwareSummary read(CommandRunning&) {
    SysfsTree sysfs("/");
    return HardwareDiscovery::fromSysfs(sysfs);
}

}  // namespace corvel::PlatformHardware
