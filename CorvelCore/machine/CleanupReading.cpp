#include "machine/CleanupReading.h"

#include "cleanup/SystemOpenFiles.h"

namespace corvel {

CleanupSources cleanupSources(Machine& machine, std::vector<std::string> projectRoots) {
    CleanupSources sources{machine.catalog(std::move(projectRoots)), [&machine] { return machine.snapshot().volumes; },
                           nullptr, nullptr, machine.now()};
    if (machine.isRecorded()) {
        sources.openFiles = std::make_shared<EmptyOpenFiles>();
        sources.runningApplications = std::make_shared<FixedRunningApplications>(std::set<std::string>{});
    } else {
        sources.openFiles = systemOpenFiles();
        sources.runningApplications = systemRunningApplications();
    }
    return sources;
}

}  // namespace corvel
