// The machine being looked at: this one, or a recorded one replayed from a folder. Every front end
// (the command line, the desktop application, the background agent) opens one from its options
// and asks it instead of the environment, so that all of them read the same machine the same way
// and tests drive them with a recording and a temporary data folder.
//
//   MachineOptions options;
//   options.replay = "tests/fixtures/machines/macbook-air-m2";   // absent: the live machine
//   Machine machine = Machine::open(options);                   // throws MachineError
//   StorageSnapshot snapshot = machine.snapshot();
//   CommandRunning& docker = machine.runner(ToolTimeout::inventory);
//
// Safe to share between threads: runners are created once per time-out under a lock and are
// themselves stateless between runs.
#pragma once

#include "command/CommandRunning.h"
#include "command/RecordedCommandRunner.h"
#include "common/Environment.h"
#include "common/ISO8601.h"
#include "common/Platform.h"
#include "diagnostics/SettingsStore.h"
#include "machine/ToolTimeout.h"
#include "space/SpaceCatalog.h"
#include "storage/RecordedMachine.h"
#include "storage/StorageSnapshot.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// Options that name a machine that cannot be opened: a replay folder that is not one, a
// recording that cannot be read, a date that is not ISO 8601. The text names the option.
class MachineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct MachineOptions {
    std::optional<std::filesystem::path> replay;  // a recorded machine's folder; absent: this machine
    std::optional<std::string> now;               // ISO 8601 text fixing the current time
    std::optional<std::filesystem::path> dataFolder;
    Environment environment = currentEnvironment();
};

class Machine {
public:
    // Checks every option before any work: a bad date or recording throws MachineError.
    static Machine open(MachineOptions options);

    Machine(Machine&&) = default;
    Machine& operator=(Machine&&) = default;

    bool isRecorded() const { return recording_ != nullptr; }
    // The recording in replay, null on the live machine.
    const RecordedMachine* recording() const { return recording_.get(); }
    Platform platform() const;
    const Environment& environment() const { return options_.environment; }

    // The recorded runner in replay, else a live process runner with this time-out.
    CommandRunning& runner(ToolTimeout timeout);
    // In replay, whether the recording runs `executable`; live, whether it is an executable file.
    bool toolInstalled(const std::string& executable) const;

    // --now, else the recording's capture time, else the clock (read on every call).
    TimePoint now() const;
    // The recording's home in replay, else $HOME, else the password database.
    std::string home() const;
    // --data-dir, else $VELMORA_DATA_DIR, else the platform's support folder of the person running
    // us (also while replaying someone else's machine: the files are ours).
    std::filesystem::path dataFolder() const;

    // The user's settings from the data folder; a bad file reads as the defaults with a warning.
    SettingsStore::Loaded settings() const;

    // Disks, partitions and volumes; problems become the snapshot's warnings, never exceptions.
    StorageSnapshot snapshot();

    // The catalogue that classifies this machine's paths (its home, platform and project roots).
    SpaceCatalog catalog(std::vector<std::string> projectRoots = {}) const;

private:
    explicit Machine(MachineOptions options) : options_(std::move(options)) {}

    MachineOptions options_;
    std::optional<TimePoint> fixedNow_;
    std::unique_ptr<RecordedMachine> recording_;
    std::unique_ptr<RecordedCommandRunner> recordedRunner_;
    std::unique_ptr<std::mutex> runnersLock_ = std::make_unique<std::mutex>();
    std::map<ToolTimeout, std::unique_ptr<CommandRunning>> liveRunners_;
};

}  // namespace corvel
