#include "command/RecordedCommandRunner.h"

#include "command/CommandError.h"
#include "common/AtomicFile.h"
#include "common/Json.h"

#include <algorithm>

namespace corvel {
namespace {

std::string readRecordingFile(const std::filesystem::path& path) {
    std::optional<std::string> text;
    try {
        text = AtomicFile::read(path);
    } catch (const FileError& error) {
        throw RecordingError(error.what());
    }
    if (!text) throw RecordingError("Recording file not found: " + path.string());
    return *text;
}

}  // namespace

RecordedCommandRunner RecordedCommandRunner::load(const std::filesystem::path& directory) {
    const auto manifest = directory / "machine.json";
    const std::string text = readRecordingFile(manifest);
    std::vector<RecordedCommand> commands;
    try {
        const Json document = parseJsonText(text, manifest.string());
        if (!document.is_object()) throw DecodingError("the document is not a JSON object");
        const Json list = document.contains("commands") ? document.at("commands") : Json::array();
        if (!list.is_array()) throw DecodingError("'commands' is not a list");
        for (std::size_t i = 0; i < list.size(); ++i) {
            const Json& entry = list[i];
            try {
                RecordedCommand command;
                command.executable = required<std::string>(entry, "executable");
                command.arguments = valueOr<std::vector<std::string>>(entry, "arguments", {});
                command.status = valueOr<std::int32_t>(entry, "status", 0);
                command.standardError = valueOr<std::string>(entry, "stderr", "");
                command.timedOut = valueOr<bool>(entry, "timedOut", false);
                command.launchError = optionalValue<std::string>(entry, "launchError");
                if (const auto file = optionalValue<std::string>(entry, "stdout")) {
                    command.standardOutput = readRecordingFile(directory / *file);
                }
                commands.push_back(std::move(command));
            } catch (const DecodingError& error) {
                throw DecodingError("command " + std::to_string(i + 1) + ": " + error.what());
            }
        }
    } catch (const DecodingError& error) {
        const std::string message = error.what();
        // parseJsonText already names the file.
        if (message.rfind(manifest.string(), 0) == 0) throw RecordingError(message);
        throw RecordingError(manifest.string() + ": " + message);
    }
    return RecordedCommandRunner(std::move(commands));
}

std::string RecordedCommandRunner::run(const std::string& executable, const std::vector<std::string>& arguments) {
    const auto found = std::find_if(commands_.begin(), commands_.end(), [&](const RecordedCommand& command) {
        return command.executable == executable && command.arguments == arguments;
    });
    if (found == commands_.end()) throw CommandError::launchFailed("no recording");
    if (found->launchError) throw CommandError::launchFailed(*found->launchError);
    if (found->timedOut) throw CommandError::timedOut();
    const std::string output = found->standardOutput.value_or("");
    if (found->status != 0) throw CommandError::failed(found->status, commandFailureMessage(found->standardError, output));
    return output;
}

bool RecordedCommandRunner::hasExecutable(const std::string& executable) const {
    return std::any_of(commands_.begin(), commands_.end(),
                       [&](const RecordedCommand& command) { return command.executable == executable; });
}

}  // namespace corvel
