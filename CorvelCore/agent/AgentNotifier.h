// Notifications of monitor events through the platform's own notifier, run like every other tool
// through a command policy: `osascript -e 'display notification …'` on macOS, `notify-send` on
// Linux. A busy cycle never floods the screen: the first few events are shown one by one and the
// rest as one summary.
//
//   auto log = AgentNotifier::send(events, machine.platform(), machine.runner(ToolTimeout::discovery),
//                                  [&](const std::string& exe) { return machine.toolInstalled(exe); }, enabled);
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "common/Platform.h"
#include "monitoring/MonitorEvent.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace corvel::AgentNotifier {

inline constexpr std::size_t individualLimit = 3;

struct Notification {
    std::string title;
    std::string message;
    bool urgent = false;  // a critical alert
    bool operator==(const Notification&) const = default;
};

struct Command {
    std::string executable;
    std::vector<std::string> arguments;
    bool operator==(const Command&) const = default;
};

// The events as notifications: the first `individualLimit` each on their own, then one summary.
std::vector<Notification> notifications(const std::vector<MonitorEvent>& events);

const CommandPolicy& policy(Platform platform);
Command command(Platform platform, const Notification& notification);

// Sends every notification. Returns the lines worth logging: one when notifications are off or
// the notifier is not installed (nothing is run then), one per notification that failed.
std::vector<std::string> send(const std::vector<MonitorEvent>& events, Platform platform, CommandRunning& runner,
                              const std::function<bool(const std::string&)>& installed, bool enabled);

}  // namespace corvel::AgentNotifier
