#include "ScreenCommands.h"

#include "common/Text.h"

#include <array>
#include <string_view>
#include <utility>

namespace corvel::cli {

std::string commandFor(Insight::Destination destination) {
    switch (destination) {
        case Insight::Destination::space: return "velmora scan";
        case Insight::Destination::cleanup: return "velmora cleanup suggest";
        case Insight::Destination::topology: return "velmora topology";
        case Insight::Destination::docker: return "velmora docker";
        case Insight::Destination::migration: return "velmora projects";
        case Insight::Destination::health: return "velmora health";
        case Insight::Destination::diskOperations: return "velmora ops";
        case Insight::Destination::accounting: return "velmora accounting";
    }
    return "velmora help";
}

std::string withCommandHints(const std::string& text) {
    // Each phrase as the core writes it, and what follows it on the command line.
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 3> mentions{{
        {"run Verify in Disk Operations", "run Verify in Disk Operations, or velmora ops run verifyVolume VOLUME"},
        {"Use the Migration Center", "Use the Migration Center (velmora migrate)"},
        {"Use the Docker Storage Center", "Use the Docker Storage Center (velmora docker)"},
    }};
    std::string result = text;
    for (const auto& [phrase, hinted] : mentions) result = replaceAll(result, phrase, hinted);
    return result;
}

}  // namespace corvel::cli
