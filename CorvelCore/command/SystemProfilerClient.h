// The hardware-report tool, limited to the three JSON reports the topology reader and the
// hardware summary use.
#pragma once

#include "command/CommandPolicy.h"

#include <string>

namespace corvel {

class SystemProfilerClient {
public:
    static constexpr const char* executable = "/usr/sbin/system_profiler";
    static const CommandPolicy& policy();

    explicit SystemProfilerClient(CommandRunning& runner) : runner_(runner) {}

    // JSON report of the Thunderbolt/USB4 buses.
    std::string thunderbolt() const;

private:
    CommandRunning& runner_;
};

}  // namespace corvel
