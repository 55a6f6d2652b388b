#include "CliContext.h"

#include "CliErrors.h"
#include "command/ProcessCommandRunner.h"
#include "common/DataFolder.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace corvel::cli {
namespace {

std::optional<std::string> environment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

}  // namespace

CliContext::CliContext(std::ostream& out, std::ostream& err, bool outIsTerminal, bool errIsTerminal)
    : out_(out), err_(err), style_(outIsTerminal && !environment("NO_COLOR")), errIsTerminal_(errIsTerminal) {}

void CliContext::validate() {
    if (!options_.now.empty() && !ISO8601::parse(options_.now))
        throw UsageError("--now: '" + options_.now + "' is not an ISO 8601 date (e.g. 2026-11-02T09:30:00Z)");
    if (isReplay()) {
        std::error_code ec;
        if (!std::filesystem::is_directory(options_.replay, ec))
            throw UsageError("--replay: '" + options_.replay + "' is not a folder");
        recording();
    }
}

const RecordedMachine* CliContext::recording() {
    if (!isReplay()) return nullptr;
    if (!recording_) {
        try {
            recording_ = RecordedMachine::load(options_.replay);
            recordedRunner_ = std::make_unique<RecordedCommandRunner>(RecordedCommandRunner::load(options_.replay));
        } catch (const RecordingError& error) {
            throw UsageError(std::string("--replay: ") + error.what());
        }
    }
    return &*recording_;
}

CommandRunning& CliContext::runner(double timeoutSeconds) {
    if (isReplay()) {
        recording();
        return *recordedRunner_;
    }
    auto& slot = liveRunners_[timeoutSeconds];
    if (!slot) slot = std::make_unique<ProcessCommandRunner>(timeoutSeconds);
    return *slot;
}

bool CliContext::toolInstalled(const std::string& executable) {
    if (isReplay()) {
        recording();
        return recordedRunner_->hasExecutable(executable);
    }
    return ::access(executable.c_str(), X_OK) == 0;
}

TimePoint CliContext::now() {
    if (!options_.now.empty()) {
        if (auto parsed = ISO8601::parse(options_.now)) return *parsed;
        throw UsageError("--now: '" + options_.now + "' is not an ISO 8601 date (e.g. 2026-11-02T09:30:00Z)");
    }
    if (const auto* machine = recording()) return machine->capturedAt;
    return currentTime();
}

std::string CliContext::home() {
    if (const auto* machine = recording()) return machine->home;
    if (auto value = environment("HOME")) return *value;
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return "/";
}

std::filesystem::path CliContext::dataDir() {
    if (!options_.dataDir.empty()) return options_.dataDir;
    if (auto value = environment("VELMORA_DATA_DIR")) return *value;
    // The support folder belongs to the person running us, even while replaying someone else's machine.
    std::string ownHome = environment("HOME").value_or("/");
    return defaultDataFolder(hostPlatform(), ownHome, environment("XDG_DATA_HOME"));
}

void CliContext::printJson(const Json& document) { out_ << document.dump(2) << '\n'; }

}  // namespace corvel::cli
