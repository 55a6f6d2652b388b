// A recorded machine's manifest, then everything a replay derives from it (snapshot, diagnosis,
// Docker reading), and the settings file. Recordings come from other people's machines, so a
// hostile one must end in a MachineError or a degraded reading, never in a crash.
#include "FuzzInput.h"
#include "diagnostics/SettingsStore.h"
#include "machine/DockerReading.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"

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

    MachineOptions options;
    options.replay = folder;
    options.dataFolder = folder / "data";
    options.environment = Environment{{"HOME", folder.string()}};
    try {
        Machine machine = Machine::open(options);
        const auto settings = machine.settings();
        const auto snapshot = machine.snapshot();
        (void)MachineDiagnosis::of(snapshot, settings.settings, {});
        (void)DockerReading::read(machine, snapshot);
    } catch (const MachineError&) {
    }
    return 0;
}
