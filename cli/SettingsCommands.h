// The user's settings as the command line reads them: loaded from the data folder, with an
// unreadable file reported on stderr and replaced by the defaults for this run.
#pragma once

#include "CliContext.h"
#include "diagnostics/CorvelSettings.h"

namespace corvel::cli {

CorvelSettings loadSettings(CliContext& context);

}  // namespace corvel::cli
