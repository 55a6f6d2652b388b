// The hardware summary of the machine this program runs on. One implementation per platform
// lives under platform/<os>/, chosen by the build.
#pragma once

#include "command/CommandRunning.h"
#include "hardware/HardwareSummary.h"

namespace corvel::PlatformHardware {

// Never throws; problems become the summary's warnings.
HardwareSummary read(CommandRunning& runner);

}  // namespace corvel::PlatformHardware
