// What one agent cycle runs with: the user's settings (read again every cycle, so a change needs no
// restart) under the options the agent was started with.
//
//   auto configuration = AgentConfiguration::from(settings, overrides);
//   if (!configuration.monitoringEnabled) { /* status only */ }
//   sleep(configuration.interval);
#pragma once

#include "diagnostics/CorvelSettings.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace corvel {

// Options given on the agent's command line; each one wins over its setting.
struct AgentOverrides {
    std::optional<std::chrono::seconds> interval;  // --interval MINUTES (or a test's seconds)
    std::optional<std::filesystem::path> textfileDirectory;
};

struct AgentConfiguration {
    bool monitoringEnabled = true;
    bool notificationsEnabled = true;
    std::chrono::seconds interval{15 * 60};
    std::optional<std::filesystem::path> textfileDirectory;

    static AgentConfiguration from(const CorvelSettings& settings, const AgentOverrides& overrides);

    bool operator==(const AgentConfiguration&) const = default;
};

}  // namespace corvel
