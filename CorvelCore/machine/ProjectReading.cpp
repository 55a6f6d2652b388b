#include "machine/ProjectReading.h"

#include <filesystem>

namespace corvel {

std::vector<std::string> defaultProjectRoots(Machine& machine) {
    if (machine.isRecorded()) return {};
    return ProjectDiscovery::defaultRoots(machine.settings().settings.projectRoots, machine.home(),
                                          [](const std::string& path) {
                                              std::error_code error;
                                              return std::filesystem::is_directory(path, error);
                                          });
}

ProjectListing projectListing(Machine& machine, const std::vector<std::string>& roots,
                              const ProjectDiscoveryOptions& options, ScanProgress& progress,
                              const std::function<bool()>& isCancelled) {
    const auto catalog = machine.catalog(machine.settings().settings.projectRoots);
    return ProjectDiscovery::discover(roots, catalog, options, progress, isCancelled);
}

}  // namespace corvel
