#include "machine/Machine.h"

#include "command/ProcessCommandRunner.h"
#include "common/DataFolder.h"
#include "storage/MachineStorage.h"

#include <unistd.h>

namespace corvel {

Machine Machine::open(MachineOptions options) {
    Machine machine(std::move(options));
    if (machine.options_.now) {
        machine.fixedNow_ = ISO8601::parse(*machine.options_.now);
        if (!machine.fixedNow_)
            throw MachineError("--now: '" + *machine.options_.now +
                               "' is not an ISO 8601 date (e.g. 2026-11-02T09:30:00Z)");
    }
    if (const auto& folder = machine.options_.replay) {
        std::error_code error;
        if (!std::filesystem::is_directory(*folder, error))
            throw MachineError("--replay: '" + folder->string() + "' is not a folder");
        try {
            machine.recording_ = std::make_unique<RecordedMachine>(RecordedMachine::load(*folder));
            machine.recordedRunner_ = std::make_unique<RecordedCommandRunner>(RecordedCommandRunner::load(*folder));
        } catch (const RecordingError& problem) {
            throw MachineError(std::string("--replay: ") + problem.what());
        }
    }
    return machine;
}

Platform Machine::platform() const {
    return recording_ ? recording_->platform : hostPlatform();
}

CommandRunning& Machine::runner(ToolTimeout timeout) {
    if (recordedRunner_) return *recordedRunner_;
    const std::lock_guard lock(*runnersLock_);
    auto& slot = liveRunners_[timeout];
    if (!slot) slot = std::make_unique<ProcessCommandRunner>(seconds(timeout));
    return *slot;
}

bool Machine::toolInstalled(const std::string& executable) const {
    if (recordedRunner_) return recordedRunner_->hasExecutable(executable);
    return ::access(executable.c_str(), X_OK) == 0;
}

TimePoint Machine::now() const {
    if (fixedNow_) return *fixedNow_;
    if (recording_) return recording_->capturedAt;
    return currentTime();
}

std::string Machine::home() const {
    if (recording_) return recording_->home;
    return userHome(options_.environment);
}

std::filesystem::path Machine::dataFolder() const {
    if (options_.dataFolder) return *options_.dataFolder;
    if (auto folder = lookup(options_.environment, "VELMORA_DATA_DIR")) return *folder;
    return defaultDataFolder(hostPlatform(), userHome(options_.environment),
                             lookup(options_.environment, "XDG_DATA_HOME"));
}

SettingsStore::Loaded Machine::settings() const {
    return SettingsStore(dataFolder(), home()).load();
}

StorageSnapshot Machine::snapshot() {
    return MachineStorage::snapshot(runner(ToolTimeout::discovery), recording(), now());
}

SpaceCatalog Machine::catalog(std::vector<std::string> projectRoots) const {
    return SpaceCatalog(home(), std::move(projectRoots), platform());
}

}  // namespace corvel
