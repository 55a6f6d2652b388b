// Lists what Velmora keeps for this person and removes exactly that. A folder inside the list is
// removed depth-first without following links; whatever cannot be removed (a folder that cannot be
// read, a file the system refuses) is left, named with the reason, and the rest still goes.
//
//   auto plan = UninstallPlanner::plan(VelmoraLocations::forThisUser(environment, dataFolder));
//   auto result = UninstallPlanner::execute(plan);          // or execute(plan, remover) in tests
#pragma once

#include "uninstall/UninstallPlan.h"

#include <filesystem>
#include <functional>
#include <system_error>

namespace corvel::UninstallPlanner {

// Removes one file, link or empty folder; an empty error code on success.
using Remover = std::function<std::error_code(const std::filesystem::path&)>;
std::error_code removeOne(const std::filesystem::path& path);

// In the default data folder every entry is ours; in a folder someone named, only the files
// Velmora writes. Then settings, agent registration, caches and earlier data folders that exist.
UninstallPlan plan(const VelmoraLocations& locations);

UninstallResult execute(const UninstallPlan& plan, const Remover& remover = removeOne);

}  // namespace corvel::UninstallPlanner
