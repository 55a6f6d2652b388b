// A recorded machine's manifest, then what a replay derives from it (the storage snapshot, the
// diagnosis and health, the Docker inventory), and the settings file. Recordings come from other
// people's machines, so a hostile one must end in a RecordingError or a degraded reading, never
// in a crash. The pieces are called directly rather than through Machine so that this harness
// builds without the state-changing areas.
#include "FuzzInput.h"
#include "command/RecordedCommandRunner.h"
#include "common/Environment.h"
#include "diagnostics/DiagnosticEngine.h"
#include "diagnostics/HealthAssessment.h"
#include "diagnostics/SettingsStore.h"
#include "docker/DockerClient.h"
#include "docker/RecordedDockerHost.h"
#include "storage/MachineStorage.h"
#include "storage/RecordedMachine.h"

#include <unistd.h>
#include <filesystem>
#include <fstream>

namespace {

std::filesystem::path scratchFolder() {
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / ("velmora-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path / "data");
        return path;
    }();
    return folder;
}

void writeFile(const std::filesystem::path& path, std::string_view text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvel;
    const auto input = fuzz::text(data, size);
    const auto folder = scratchFolder();
    writeFile(folder / "machine.json", input);
    writeFile(folder / "data" / SettingsStore::fileName, input);

    const auto settings = SettingsStore(folder / "data", folder).load().settings;
    try {
        const auto recording = RecordedMachine::load(folder);
        auto runner = RecordedCommandRunner::load(folder);
        const auto snapshot = MachineStorage::snapshot(runner, &recording, recording.capturedAt);
        const auto report = DiagnosticEngine(settings.thresholds).evaluate(snapshot);
        (void)HealthAssessment::assess(snapshot, report, {}, settings.expectedVolumes, settings.verifiedVolumes);

        std::vector<std::string> mountPoints;
        for (const auto& volume : snapshot.volumes) mountPoints.push_back(volume.mountPoint);
        const RecordedDockerHost host(recording.document, folder, mountPoints, [&runner](const std::string& path) {
            for (const auto& command : runner.commands())
                if (command.executable == path) return true;
            return false;
        });
        const Environment environment{{"HOME", recording.home}, {"PATH", "/usr/local/bin:/usr/bin:/bin"}};
        if (auto client = DockerClient::make(runner, environment, host))
            (void)client->inventory(recording.home, recording.capturedAt);
    } catch (const RecordingError&) {
    }
    return 0;
}
