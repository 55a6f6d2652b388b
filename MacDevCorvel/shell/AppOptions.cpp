#include "shell/AppOptions.h"

#include <utility>

namespace corvel::desktop {

AppOptions::Parsed AppOptions::parse(const std::vector<std::string>& arguments) {
    Parsed parsed;
    auto& options = parsed.options;
    const std::pair<const char*, std::optional<std::string>*> valued[] = {
        {"--replay", &options.replay},           {"--now", &options.now},
        {"--data-dir", &options.dataDir},        {"--space-folder", &options.spaceFolder},
        {"--screenshots", &options.screenshots},
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--agent-register" || argument == "--agent-unregister") {
            const auto change =
                argument == "--agent-register" ? AgentChange::registerAgent : AgentChange::unregisterAgent;
            if (options.agent != AgentChange::none && options.agent != change) {
                parsed.error = "--agent-register and --agent-unregister exclude each other";
                return parsed;
            }
            options.agent = change;
            continue;
        }
        if (argument == "--help" || argument == "-h") {
            options.help = true;
            continue;
        }
        bool known = false;
        for (const auto& [name, target] : valued) {
            const std::string prefix = std::string(name) + "=";
            std::optional<std::string> value;
            if (argument == name) {
                if (i + 1 == arguments.size()) {
                    parsed.error = std::string(name) + " needs a value";
                    return parsed;
                }
                value = arguments[++i];
            } else if (argument.rfind(prefix, 0) == 0) {
                value = argument.substr(prefix.size());
            } else {
                continue;
            }
            if (value->empty()) {
                parsed.error = std::string(name) + " needs a value";
                return parsed;
            }
            if (*target) {
                parsed.error = std::string(name) + " was given twice";
                return parsed;
            }
            *target = std::move(value);
            known = true;
            break;
        }
        if (!known) {
            parsed.error = "unknown argument '" + argument + "' (see --help)";
            return parsed;
        }
    }
    return parsed;
}

std::string AppOptions::usage() {
    return "Usage: velmora-desktop [--replay DIR] [--now ISO8601] [--data-dir DIR] [--space-folder DIR]\n"
           "       velmora-desktop --agent-register | --agent-unregister\n"
           "\n"
           "  --replay DIR         look at a recorded machine instead of this one\n"
           "  --now ISO8601        the current time (default: the recording's, else the clock)\n"
           "  --data-dir DIR       where settings and history live\n"
           "  --space-folder DIR   scan this folder on the space screen at start\n"
           "  --agent-register     register the background agent, print one line and exit\n"
           "  --agent-unregister   unregister the background agent, print one line and exit\n"
           "  --screenshots DIR    write a PNG of every screen into DIR and exit\n";
}

}  // namespace corvel::desktop
