#include "machine/MigrationReading.h"

#include "machine/MachineOpenFiles.h"
#include "migration/MigrationPlanner.h"
#include "space/DirectorySizer.h"

#include <fmt/format.h>

#include <unistd.h>

#include <filesystem>
#include <set>

namespace corvel {

MigrationFacts migrationFacts(Machine& machine, const std::string& source, const std::string& target,
                              MigrationProgress& progress, const std::function<bool()>& isCancelled) {
    MigrationFacts facts;
    facts.source = source;
    facts.target = target;
    facts.platform = machine.platform();
    facts.projectRoots = machine.settings().settings.projectRoots;

    const auto volumes = machine.snapshot().volumes;
    facts.sourceVolume = MigrationPlanner::volumeContaining(volumes, source);
    facts.targetVolume = MigrationPlanner::volumeContaining(volumes, target);
    std::error_code error;
    facts.destinationExists =
        std::filesystem::symlink_status(MigrationPlanner::destinationFor(source, target), error).type() !=
        std::filesystem::file_type::not_found;

    progress.setPhase("Measuring");
    ScanProgress measuring;
    if (const auto measured = DirectorySizer::measure(source, machine.now(), measuring, isCancelled))
        facts.allocatedBytes = measured->allocatedBytes;

    facts.scan = AbsolutePathScanner::scan(source, progress, isCancelled);

    progress.setPhase("Looking for processes using it");
    try {
        std::set<std::string> seen;
        for (const auto& usage : MachineOpenFiles::lister(machine)->usages(source)) {
            // Our own working folder inside the workspace is not a reason to stop the move.
            if (usage.pid == ::getpid()) continue;
            auto text = fmt::format("{} (pid {})", usage.command, usage.pid);
            if (seen.insert(text).second) facts.openBy.push_back(std::move(text));
        }
    } catch (const std::exception& failure) {
        facts.openByProblem = failure.what();
    }
    return facts;
}

}  // namespace corvel
