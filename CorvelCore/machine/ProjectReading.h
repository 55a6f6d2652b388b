// What `velmora projects` reads from the machine being looked at: the roots to look through (the
// settings' project roots, then the common project folders of the home folder) and the catalogue
// that names the rebuildable parts of each project, with this machine's home and project roots.
//
//   auto roots = defaultProjectRoots(machine);    // empty on a recorded machine
//   ScanProgress progress;
//   ProjectListing listing = projectListing(machine, roots, progress, isCancelled);
#pragma once

#include "machine/Machine.h"
#include "migration/ProjectDiscovery.h"

#include <functional>
#include <string>
#include <vector>

namespace corvel {

// The existing default roots. A recorded machine holds no file tree, so it has none.
std::vector<std::string> defaultProjectRoots(Machine& machine);

// `roots` are normal absolute paths of folders on this machine's file system.
ProjectListing projectListing(Machine& machine, const std::vector<std::string>& roots,
                              const ProjectDiscoveryOptions& options, ScanProgress& progress,
                              const std::function<bool()>& isCancelled);

}  // namespace corvel
