// The texts that make the agent start by itself, as pure functions of what they start: a macOS
// LaunchAgent property list, a systemd user service with its timer, and an XDG autostart entry for
// Linux desktops without a user systemd. Every argument is quoted the way each format requires,
// so a program or data folder path with spaces, quotes or "%" survives.
//
//   AgentLaunch launch{"/usr/local/bin/velmora", "/home/me/.local/share/velmora", 15};
//   AtomicFile::write(unitFolder / AgentLaunchFiles::serviceName, AgentLaunchFiles::systemdService(launch));
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// The application's identifier; the LaunchAgent is named appID + ".agent.plist".
inline constexpr std::string_view appID = "app.velmora";

struct AgentLaunch {
    std::string program;     // absolute path of velmora
    std::string dataFolder;  // handed over with --data-dir, so the agent reads the files we do
    int intervalMinutes = 15;

    // velmora --data-dir DIR agent run [--once]
    std::vector<std::string> arguments(bool once) const;
    bool operator==(const AgentLaunch&) const = default;
};

namespace AgentLaunchFiles {

inline constexpr const char* serviceName = "velmora-agent.service";
inline constexpr const char* timerName = "velmora-agent.timer";
inline constexpr const char* autostartName = "velmora-agent.desktop";

std::string launchAgentLabel();     // appID + ".agent"
std::string launchAgentFileName();  // appID + ".agent.plist"

// Starts `velmora agent run` at login and again should it crash; the agent keeps its own interval.
std::string launchAgentPlist(const AgentLaunch& launch);
// One cycle (`agent run --once`) per start; the timer starts it every `intervalMinutes`.
std::string systemdService(const AgentLaunch& launch);
std::string systemdTimer(const AgentLaunch& launch);
// Starts `velmora agent run` with the desktop session.
std::string autostartEntry(const AgentLaunch& launch);

// One argument for a systemd Exec line: double-quoted, with "\", "\"", "%" and "$" escaped.
std::string systemdQuoted(std::string_view argument);
// One argument for a desktop entry's Exec key, quoted and escaped for both of its layers.
std::string desktopExecQuoted(std::string_view argument);
// Text for a property list's <string>: "&", "<" and ">" as entities.
std::string xmlEscaped(std::string_view text);

}  // namespace AgentLaunchFiles
}  // namespace corvel
