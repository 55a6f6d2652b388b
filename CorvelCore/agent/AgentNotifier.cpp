#include "agent/AgentNotifier.h"

#include "command/CommandError.h"

#include <fmt/format.h>

namespace corvel::AgentNotifier {
namespace {

constexpr const char* appName = "Velmora";

// An AppleScript string literal: backslash and quote escaped, line breaks as spaces (a
// notification shows one paragraph anyway).
std::string appleScriptString(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n' || c == '\r' || c == '\t') {
            quoted += ' ';
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

}  // namespace

std::vector<Notification> notifications(const std::vector<MonitorEvent>& events) {
    std::vector<Notification> result;
    for (std::size_t i = 0; i < events.size() && i < individualLimit; ++i) {
        const auto& event = events[i];
        result.push_back({event.title, event.message, event.severity == Severity::critical});
    }
    if (events.size() > individualLimit) {
        const std::size_t rest = events.size() - individualLimit;
        bool urgent = false;
        for (std::size_t i = individualLimit; i < events.size(); ++i)
            urgent = urgent || events[i].severity == Severity::critical;
        result.push_back({fmt::format("{} more storage {}", rest, rest == 1 ? "event" : "events"),
                          "See them with: velmora agent events", urgent});
    }
    return result;
}

const CommandPolicy& policy(Platform platform) {
    static const CommandPolicy macPolicy{"/usr/bin/osascript", {{"-e"}}};
    static const CommandPolicy linuxPolicy{"/usr/bin/notify-send", {{"--app-name=Velmora"}}};
    return platform == Platform::macos ? macPolicy : linuxPolicy;
}

Command command(Platform platform, const Notification& notification) {
    if (platform == Platform::macos) {
        return {policy(platform).executable,
                {"-e", "display notification " + appleScriptString(notification.message) + " with title " +
                           appleScriptString(appName) + " subtitle " + appleScriptString(notification.title)}};
    }
    // "--" ends the options: a volume named "-u" is text, not a flag.
    return {policy(platform).executable,
            {"--app-name=Velmora", notification.urgent ? "--urgency=critical" : "--urgency=normal", "--",
             notification.title, notification.message}};
}

std::vector<std::string> send(const std::vector<MonitorEvent>& events, Platform platform, CommandRunning& runner,
                              const std::function<bool(const std::string&)>& installed, bool enabled) {
    if (events.empty()) return {};
    const auto& rule = policy(platform);
    const std::string count = fmt::format("{} {}", events.size(), events.size() == 1 ? "event" : "events");
    if (!enabled) return {"notifications skipped (" + count + "): notificationsEnabled is false"};
    if (!installed(rule.executable))
        return {"notifications skipped (" + count + "): " + rule.executable + " is not installed"};
    std::vector<std::string> log;
    for (const auto& notification : notifications(events)) {
        const auto call = command(platform, notification);
        try {
            rule.run(call.arguments, runner);
        } catch (const CommandError& error) {
            log.push_back("notification '" + notification.title + "' not shown: " + error.description());
        }
    }
    return log;
}

}  // namespace corvel::AgentNotifier
