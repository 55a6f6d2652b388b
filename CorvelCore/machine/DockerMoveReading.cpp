#include "machine/DockerMoveReading.h"

#include "common/Text.h"
#include "machine/DockerReading.h"
#include "migration/MigrationPlanner.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace corvel {

DockerMoveFacts dockerMoveFacts(Machine& machine, const std::string& target) {
    const auto snapshot = machine.snapshot();
    const auto reading = DockerReading::read(machine, snapshot);

    DockerMoveFacts facts;
    facts.platform = reading.platform;
    facts.isInstalled = reading.executable.has_value();
    facts.target = target;
    facts.home = machine.home();
    if (const auto& inventory = reading.inventory) {
        facts.isEngineRunning = inventory->isReachable();
        facts.engineVersion = inventory->serverVersion;
        if (const auto& image = inventory->diskImage) {
            facts.dataPath = image->path;
            // The locator names a native engine's folder as a "data root"; Docker Desktop's is a file.
            facts.isDataFolder = contains(image->source, "data root");
            facts.apparentBytes = image->apparentBytes;
            facts.allocatedBytes = image->allocatedBytes;
            facts.sourceVolume = MigrationPlanner::volumeContaining(snapshot.volumes, image->path);
        }
    }
    facts.targetVolume = MigrationPlanner::volumeContaining(snapshot.volumes, target);

    if (machine.isRecorded()) {
        const bool mounted = std::any_of(snapshot.volumes.begin(), snapshot.volumes.end(),
                                         [&](const StorageVolume& volume) { return volume.mountPoint == target; });
        facts.targetState = mounted ? TargetState::folder : TargetState::unchecked;
        return facts;
    }
    namespace fs = std::filesystem;
    std::error_code error;
    const auto type = fs::status(target, error).type();
    facts.targetState = type == fs::file_type::not_found || type == fs::file_type::none ? TargetState::missing
                        : type == fs::file_type::directory                              ? TargetState::folder
                                                                                        : TargetState::notFolder;
    if (facts.targetState == TargetState::folder) {
        facts.isTargetWritable = ::access(target.c_str(), W_OK) == 0;
        facts.destinationExists =
            fs::symlink_status(DockerMovePlanner::destinationFor(facts), error).type() != fs::file_type::not_found;
    }
    return facts;
}

}  // namespace corvel
