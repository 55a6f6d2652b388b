// What the command line does about Velmora's own files beyond the commands: moving data that an
// earlier version kept under another name, once, before the first command runs.
#pragma once

#include "CliContext.h"

namespace corvel::cli {

// Moves earlier data into the default data folder the first time any command starts, and says
// so on stderr; a failure is a warning, never a reason for the command not to run.
void migrateLegacyData(CliContext& context);

}  // namespace corvel::cli
