// How long each kind of external tool run may take before it is stopped. Named once, so that a
// new caller picks a kind rather than a number.
//
//   CommandRunning& runner = machine.runner(ToolTimeout::discovery);
#pragma once

namespace corvel {

enum class ToolTimeout {
    discovery,   // 20 s: storage discovery, the device topology, the space scan's helpers
    inspection,  // 60 s: process inspection, the cleanup simulation, the release check
    inventory,   // 120 s: the Docker inventory (a busy engine is slow over "system df -v")
    action,      // 600 s: disk operations and installing an update
};

constexpr double seconds(ToolTimeout timeout) {
    switch (timeout) {
        case ToolTimeout::discovery:
            return 20;
        case ToolTimeout::inspection:
            return 60;
        case ToolTimeout::inventory:
            return 120;
        case ToolTimeout::action:
            return 600;
    }
    return 20;
}

}  // namespace corvel
