// Runs `smartctl` for the Linux discovery: read-only queries only, JSON output.
//
// smartctl's exit status is a bit mask that is non-zero for plenty of readable answers (an
// error-log entry, a past threshold crossing), so `report` reads the JSON of a failed run too.
// A missing tool, a refused device or unreadable output all give an unknown verdict.
#pragma once

#include <string>

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "storage/SmartctlReport.h"

namespace corvel {

struct SmartctlClient {
    static constexpr const char* executable = "/usr/sbin/smartctl";
    // Identity, health and attribute queries; nothing that enables, tests or changes a drive.
    static const CommandPolicy& policy();

    CommandRunning& runner;

    // smartctl -j -a DEVICE; never throws.
    SmartctlReport report(const std::string& devicePath) const;
};

}  // namespace corvel
