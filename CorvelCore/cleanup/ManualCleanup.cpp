#include "cleanup/ManualCleanup.h"

namespace corvel::ManualCleanup {

std::string shellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::optional<std::string> removalCommand(const CleanupSimulation& simulation) {
    if (simulation.eligible.empty()) return std::nullopt;
    // "--" so that a path can never be read as an option.
    std::string command = "rm -r --";
    for (const auto& candidate : simulation.eligible) command += " " + shellQuoted(candidate.path);
    return command;
}

}  // namespace corvel::ManualCleanup
