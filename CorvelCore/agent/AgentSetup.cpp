#include "agent/AgentSetup.h"

#include "common/AtomicFile.h"
#include "common/Environment.h"
#include "processes/CurrentProcess.h"

#include <algorithm>
#include <filesystem>

namespace corvel::AgentSetup {

AgentHost hostFor(Machine& machine) {
    AgentHost host;
    host.platform = machine.platform();
    host.home = userHome(machine.environment());
    if (auto config = lookup(machine.environment(), "XDG_CONFIG_HOME"); config && config->front() == '/')
        host.configHome = *config;
    host.runner = &machine.runner(ToolTimeout::inspection);
    host.installed = [&machine](const std::string& executable) { return machine.toolInstalled(executable); };
    return host;
}

AgentLaunch launchFor(Machine& machine, const std::string& program) {
    const auto settings = machine.settings().settings;
    return {program, std::filesystem::absolute(machine.dataFolder()).lexically_normal().string(),
            std::max(1, settings.agentIntervalMinutes)};
}

std::optional<std::string> commandLineBeside(const std::string& program) {
    const auto folder = std::filesystem::path(program).parent_path();
    for (const auto& candidate : {folder / "velmora", folder.parent_path() / "cli" / "velmora"}) {
        std::error_code error;
        const auto status = std::filesystem::status(candidate, error);
        if (!error && std::filesystem::is_regular_file(status) &&
            (status.permissions() & std::filesystem::perms::owner_exec) != std::filesystem::perms::none)
            return candidate.lexically_normal().string();
    }
    return std::nullopt;
}

std::string runningProgram() {
    if (auto program = currentExecutablePath()) return *program;
    throw FileError("Could not find the running program");
}

AgentRegistration::Outcome change(Machine& machine, const std::string& program, bool registering) {
    const auto host = hostFor(machine);
    return registering ? AgentRegistration::registerAgent(host, launchFor(machine, program))
                       : AgentRegistration::unregisterAgent(host);
}

}  // namespace corvel::AgentSetup
