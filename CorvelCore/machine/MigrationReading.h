// What a migration plan reads from the machine being looked at: the volumes holding the
// workspace and the target, the workspace's allocated size, the files in it that name its path,
// the processes using it, and the project roots of the settings. Reads only.
//
//   MigrationProgress progress;
//   MigrationFacts facts = migrationFacts(machine, "/home/me/ws", "/mnt/work", progress, isCancelled);
//   MigrationPlan plan = MigrationPlanner::plan(facts);
#pragma once

#include "machine/Machine.h"
#include "migration/MigrationPlan.h"
#include "migration/MigrationProgress.h"

#include <functional>
#include <string>

namespace corvel {

// `source` and `target` are normal absolute paths of existing folders (the caller checks).
MigrationFacts migrationFacts(Machine& machine, const std::string& source, const std::string& target,
                              MigrationProgress& progress, const std::function<bool()>& isCancelled);

}  // namespace corvel
