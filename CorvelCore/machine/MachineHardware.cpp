#include "machine/MachineHardware.h"

#include "common/PathText.h"
#include "hardware/HardwareDiscovery.h"
#include "hardware/PlatformHardware.h"
#include "space/SpaceSummary.h"

namespace corvel::MachineHardware {

HardwareSummary read(Machine& machine, const StorageSnapshot& snapshot) {
    auto& runner = machine.runner(ToolTimeout::inspection);
    const auto* recording = machine.recording();
    auto summary = recording ? HardwareDiscovery::replay(runner, *recording) : PlatformHardware::read(runner);

    std::string problem;
    const auto scan = SpaceSummary::load(machine.dataFolder(), &problem);
    if (scan) {
        // A scan of this machine says nothing about a recorded one, unless it was taken inside
        // the recording's home.
        const bool belongs = !recording || isWithin(scan->root, recording->home);
        if (belongs) summary.internalDisk = DiskBreakdown::of(*scan, snapshot);
    } else if (!problem.empty()) {
        summary.warnings.push_back("Internal disk breakdown: " + problem);
    }
    return summary;
}

}  // namespace corvel::MachineHardware
