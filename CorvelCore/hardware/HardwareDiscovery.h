// The hardware summary from a given source, shared by the live platforms and recorded machines:
// the combined report of the hardware-report tool on macOS (only through its policy), the kernel's
// files on Linux. A Linux recording names its recorded sysfs tree under "sysfs", as for the
// topology. Never throws: a report that cannot be run or read becomes a warning.
//
//   HardwareSummary summary = HardwareDiscovery::fromReport(runner);      // macOS
//   HardwareSummary replayed = HardwareDiscovery::replay(runner, recording);
#pragma once

#include "command/CommandRunning.h"
#include "hardware/HardwareSummary.h"
#include "storage/RecordedMachine.h"
#include "topology/SysfsReading.h"

namespace corvel::HardwareDiscovery {

HardwareSummary fromReport(CommandRunning& runner);
HardwareSummary fromSysfs(SysfsReading& sysfs);
HardwareSummary replay(CommandRunning& runner, const RecordedMachine& recording);

}  // namespace corvel::HardwareDiscovery
