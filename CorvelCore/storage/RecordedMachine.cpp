#include "storage/RecordedMachine.h"

#include "command/RecordedCommandRunner.h"
#include "common/AtomicFile.h"

namespace corvel {

RecordedMachine RecordedMachine::load(const std::filesystem::path& directory) {
    const auto manifest = directory / "machine.json";
    std::optional<std::string> text;
    try {
        text = AtomicFile::read(manifest);
    } catch (const FileError& error) {
        throw RecordingError(error.what());
    }
    if (!text) throw RecordingError("Recording file not found: " + manifest.string());
    RecordedMachine machine;
    machine.directory = directory;
    try {
        machine.document = parseJsonText(*text, manifest.string());
        if (!machine.document.is_object()) throw DecodingError("the document is not a JSON object");
        machine.name = valueOr<std::string>(machine.document, "name", directory.filename().string());
        const auto platform = valueOr<std::string>(machine.document, "platform", "macos");
        const auto known = enumFromRaw<Platform>(platform);
        if (!known) throw DecodingError("unknown platform '" + platform + "' (expected macos or linux)");
        machine.platform = *known;
        machine.capturedAt = required<TimePoint>(machine.document, "capturedAt");
        machine.home = valueOr<std::string>(machine.document, "home", "/");
        machine.volumes = valueOr<std::vector<MountedVolumeRecord>>(machine.document, "volumes", {});
    } catch (const DecodingError& error) {
        const std::string message = error.what();
        if (message.rfind(manifest.string(), 0) == 0) throw RecordingError(message);
        throw RecordingError(manifest.string() + ": " + message);
    }
    return machine;
}

}  // namespace corvel
