#include "hardware/HardwareDiscovery.h"
#include "hardware/PlatformHardware.h"

namespace corvel::PlatformHardware {

HardwareSummary read(CommandRunning& runner) {
    return HardwareDiscovery::fromReport(runner);
}

}  // namespace corvel::PlatformHardware
