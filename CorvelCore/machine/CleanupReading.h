// What a cleanup simulation reads from the machine being looked at: its catalogue, its volumes,
// and on this machine the files open and the applications running. A recorded machine recorded
// neither of the last two, so a replayed simulation sees nothing open and nothing running.
//
//   CleanupSources sources = cleanupSources(machine, settings.projectRoots);
//   auto run = CleanupRun::simulatePaths({"/home/me/.cache"}, sources, progress, isCancelled);
#pragma once

#include "cleanup/CleanupRun.h"
#include "machine/Machine.h"

#include <string>
#include <vector>

namespace corvel {

// `machine` must outlive the sources: the volumes are read from it while the walk runs.
CleanupSources cleanupSources(Machine& machine, std::vector<std::string> projectRoots);

}  // namespace corvel
