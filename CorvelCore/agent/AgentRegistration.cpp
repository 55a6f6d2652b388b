#include "agent/AgentRegistration.h"

#include "command/CommandError.h"
#include "common/AtomicFile.h"

#include <fmt/format.h>

namespace corvel {

std::filesystem::path AgentHost::launchAgentPath() const {
    return home / "Library" / "LaunchAgents" / AgentLaunchFiles::launchAgentFileName();
}

std::filesystem::path AgentHost::systemdFolder() const {
    return configHome.value_or(home / ".config") / "systemd" / "user";
}

std::filesystem::path AgentHost::autostartPath() const {
    return configHome.value_or(home / ".config") / "autostart" / AgentLaunchFiles::autostartName;
}

namespace AgentRegistration {
namespace {

bool present(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

// Whether `path` already holds exactly `text`; an unreadable file does not.
bool holds(const std::filesystem::path& path, const std::string& text) {
    try {
        const auto current = AtomicFile::read(path);
        return current && *current == text;
    } catch (const FileError&) {
        return false;
    }
}

void removeFile(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
    if (error) throw AgentRegistrationError("could not remove " + path.string() + ": " + error.message());
}

void write(const std::filesystem::path& path, const std::string& text) {
    try {
        AtomicFile::write(path, text);
    } catch (const FileError& error) {
        throw AgentRegistrationError(error.what());
    }
}

// Runs a command whose refusal is the answer to the question it asks ("is it enabled?").
bool succeeds(const CommandPolicy& policy, const std::vector<std::string>& arguments, CommandRunning& runner) {
    try {
        policy.run(arguments, runner);
        return true;
    } catch (const CommandError&) {
        return false;
    }
}

void mustRun(const CommandPolicy& policy, const std::vector<std::string>& arguments, CommandRunning& runner) {
    try {
        policy.run(arguments, runner);
    } catch (const CommandError& error) {
        std::string words = policy.executable;
        for (const auto& argument : arguments) words += " " + argument;
        throw AgentRegistrationError(words + " was refused: " + error.description());
    }
}

std::vector<std::string> systemdFiles(const AgentHost& host) {
    return {(host.systemdFolder() / AgentLaunchFiles::serviceName).string(),
            (host.systemdFolder() / AgentLaunchFiles::timerName).string()};
}

bool userSystemdReachable(const AgentHost& host) {
    return host.installed(systemctlPolicy().executable) &&
           succeeds(systemctlPolicy(), {"--user", "show-environment"}, *host.runner);
}

std::string intervalText(int minutes) {
    return fmt::format("one check every {} {}", minutes, minutes == 1 ? "minute" : "minutes");
}

Outcome registerLaunchAgent(const AgentHost& host, const AgentLaunch& launch) {
    const auto path = host.launchAgentPath();
    const std::string text = AgentLaunchFiles::launchAgentPlist(launch);
    const Registration registration{AgentMechanism::launchAgent, {path.string()}};
    if (holds(path, text) &&
        succeeds(launchctlPolicy(), {"list", AgentLaunchFiles::launchAgentLabel()}, *host.runner))
        return {false, registration, "agent: already registered: LaunchAgent " + path.string()};
    const bool replacing = present(path);
    write(path, text);
    // A changed description is only read again after an unload.
    if (replacing) succeeds(launchctlPolicy(), {"unload", "-w", path.string()}, *host.runner);
    mustRun(launchctlPolicy(), {"load", "-w", path.string()}, *host.runner);
    return {true, registration, "agent: registered: LaunchAgent " + path.string() + " (starts at login)"};
}

Outcome registerSystemd(const AgentHost& host, const AgentLaunch& launch) {
    const auto files = systemdFiles(host);
    const std::string service = AgentLaunchFiles::systemdService(launch);
    const std::string timer = AgentLaunchFiles::systemdTimer(launch);
    const Registration registration{AgentMechanism::systemdUser, files};
    const std::string what = std::string("systemd --user timer ") + AgentLaunchFiles::timerName + ", " +
                             intervalText(launch.intervalMinutes);
    // One way of starting at a time: an autostart entry from a session without systemd goes.
    const bool hadAutostart = present(host.autostartPath());
    if (hadAutostart) removeFile(host.autostartPath());
    if (holds(files[0], service) && holds(files[1], timer) &&
        succeeds(systemctlPolicy(), {"--user", "is-enabled", AgentLaunchFiles::timerName}, *host.runner))
        return {hadAutostart, registration, "agent: already registered: " + what};
    write(files[0], service);
    write(files[1], timer);
    mustRun(systemctlPolicy(), {"--user", "daemon-reload"}, *host.runner);
    mustRun(systemctlPolicy(), {"--user", "enable", "--now", AgentLaunchFiles::timerName}, *host.runner);
    return {true, registration, "agent: registered: " + what};
}

Outcome registerAutostart(const AgentHost& host, const AgentLaunch& launch) {
    const auto path = host.autostartPath();
    const std::string text = AgentLaunchFiles::autostartEntry(launch);
    const Registration registration{AgentMechanism::autostart, {path.string()}};
    if (holds(path, text)) return {false, registration, "agent: already registered: XDG autostart entry " + path.string()};
    write(path, text);
    return {true, registration,
            "agent: registered: XDG autostart entry " + path.string() +
                " (no user systemd here; the agent starts with your desktop session)"};
}

}  // namespace

const CommandPolicy& launchctlPolicy() {
    static const CommandPolicy policy{"/bin/launchctl", {{"load", "-w"}, {"unload", "-w"}, {"list"}}};
    return policy;
}

const CommandPolicy& systemctlPolicy() {
    static const CommandPolicy policy{"/usr/bin/systemctl",
                                      {{"--user", "show-environment"},
                                       {"--user", "daemon-reload"},
                                       {"--user", "enable", "--now"},
                                       {"--user", "disable", "--now"},
                                       {"--user", "is-enabled"}}};
    return policy;
}

Registration inspect(const AgentHost& host) {
    if (host.platform == Platform::macos) {
        if (present(host.launchAgentPath())) return {AgentMechanism::launchAgent, {host.launchAgentPath().string()}};
        return {};
    }
    Registration found;
    for (const auto& file : systemdFiles(host)) {
        if (present(file)) {
            found.mechanism = AgentMechanism::systemdUser;
            found.files.push_back(file);
        }
    }
    if (present(host.autostartPath())) {
        if (!found.mechanism) found.mechanism = AgentMechanism::autostart;
        found.files.push_back(host.autostartPath().string());
    }
    return found;
}

Outcome registerAgent(const AgentHost& host, const AgentLaunch& launch) {
    if (host.platform == Platform::macos) return registerLaunchAgent(host, launch);
    if (userSystemdReachable(host)) return registerSystemd(host, launch);
    return registerAutostart(host, launch);
}

Outcome unregisterAgent(const AgentHost& host) {
    const Registration before = inspect(host);
    if (!before.mechanism) return {false, before, "agent: not registered"};
    if (host.platform == Platform::macos) {
        succeeds(launchctlPolicy(), {"unload", "-w", host.launchAgentPath().string()}, *host.runner);
    } else if (before.mechanism == AgentMechanism::systemdUser && userSystemdReachable(host)) {
        succeeds(systemctlPolicy(), {"--user", "disable", "--now", AgentLaunchFiles::timerName}, *host.runner);
    }
    for (const auto& file : before.files) removeFile(file);
    if (before.mechanism == AgentMechanism::systemdUser && userSystemdReachable(host))
        succeeds(systemctlPolicy(), {"--user", "daemon-reload"}, *host.runner);
    std::string removed;
    for (const auto& file : before.files) removed += (removed.empty() ? "" : ", ") + file;
    return {true, Registration{}, "agent: unregistered: removed " + removed};
}

}  // namespace AgentRegistration
}  // namespace corvel
