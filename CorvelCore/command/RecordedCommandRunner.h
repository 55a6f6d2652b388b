// Replays a recorded machine's tool output (DIR/machine.json, "commands"), so that parsers and
// discovery run exactly as they would on that machine. A command matches on executable and
// arguments exactly; one that was never recorded fails to launch with "no recording".
//
//   auto runner = RecordedCommandRunner::load("tests/fixtures/machines/macbook-internal");
//   DiskutilClient(runner).listPhysical();   // the recorded list-physical.plist
#pragma once

#include "command/CommandRunning.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// A recording that is missing, not JSON, or not of the documented shape; names the file.
class RecordingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct RecordedCommand {
    std::string executable;
    std::vector<std::string> arguments;
    std::optional<std::string> standardOutput;  // contents of the file named by "stdout"
    std::int32_t status = 0;
    std::string standardError;
    bool timedOut = false;
    std::optional<std::string> launchError;

    bool operator==(const RecordedCommand&) const = default;
};

class RecordedCommandRunner : public CommandRunning {
public:
    explicit RecordedCommandRunner(std::vector<RecordedCommand> commands) : commands_(std::move(commands)) {}

    // Reads DIR/machine.json and every stdout file it names. Throws RecordingError.
    static RecordedCommandRunner load(const std::filesystem::path& directory);

    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override;

    // In replay a tool counts as installed when some recorded command runs it.
    bool hasExecutable(const std::string& executable) const;

    const std::vector<RecordedCommand>& commands() const { return commands_; }

private:
    std::vector<RecordedCommand> commands_;
};

}  // namespace corvel
