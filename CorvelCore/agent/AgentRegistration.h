// Makes the agent start by itself for the person running us, never for the whole machine and never
// with root's help: a LaunchAgent loaded with launchctl on macOS; on Linux a systemd user service
// and timer, or, where there is no user systemd to talk to, an XDG autostart entry. Registering
// twice changes nothing the second time; unregistering removes whatever was registered.
//
//   AgentHost host{Platform::linux, "/home/me", std::nullopt, &runner, installed};
//   auto outcome = AgentRegistration::registerAgent(host, launch);   // throws AgentRegistrationError
//   print(outcome.line);   // "agent: registered: systemd --user timer velmora-agent.timer, …"
#pragma once

#include "agent/AgentLaunchFiles.h"
#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "common/EnumTable.h"
#include "common/Platform.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// The platform's service refused; the text says which command and why.
class AgentRegistrationError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Where the agent is registered: the person's own folders and the tools that read them.
struct AgentHost {
    Platform platform = Platform::linux;
    std::filesystem::path home;
    std::optional<std::filesystem::path> configHome;  // $XDG_CONFIG_HOME; absent: home/.config
    CommandRunning* runner = nullptr;                  // launchctl, systemctl
    std::function<bool(const std::string&)> installed;  // whether an executable is there

    std::filesystem::path launchAgentPath() const;  // ~/Library/LaunchAgents/<appID>.agent.plist
    std::filesystem::path systemdFolder() const;    // <config>/systemd/user
    std::filesystem::path autostartPath() const;    // <config>/autostart/velmora-agent.desktop
};

enum class AgentMechanism { launchAgent, systemdUser, autostart };

template <>
struct EnumTable<AgentMechanism> {
    static constexpr std::array<EnumEntry<AgentMechanism>, 3> entries{{
        {AgentMechanism::launchAgent, "launchAgent", "LaunchAgent"},
        {AgentMechanism::systemdUser, "systemdUser", "systemd --user timer"},
        {AgentMechanism::autostart, "autostart", "XDG autostart entry"},
    }};
};
CORVEL_ENUM_JSON(AgentMechanism)

namespace AgentRegistration {

const CommandPolicy& launchctlPolicy();
const CommandPolicy& systemctlPolicy();

struct Registration {
    std::optional<AgentMechanism> mechanism;  // absent: not registered
    std::vector<std::string> files;           // the files that register it
    bool operator==(const Registration&) const = default;
};

struct Outcome {
    bool changed = false;
    Registration registration;
    std::string line;  // one line for people, beginning "agent: "
};

// What is registered now, from the files alone (nothing is run).
Registration inspect(const AgentHost& host);

Outcome registerAgent(const AgentHost& host, const AgentLaunch& launch);
Outcome unregisterAgent(const AgentHost& host);

}  // namespace AgentRegistration
}  // namespace corvel
