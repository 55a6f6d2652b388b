#include "agent/AgentConfiguration.h"

#include <algorithm>

namespace corvel {

AgentConfiguration AgentConfiguration::from(const CorvelSettings& settings, const AgentOverrides& overrides) {
    AgentConfiguration configuration;
    configuration.monitoringEnabled = settings.monitoringEnabled;
    configuration.notificationsEnabled = settings.notificationsEnabled;
    // A hand-edited file may hold nonsense; a minute is the shortest interval a person can set.
    configuration.interval =
        overrides.interval.value_or(std::chrono::minutes(std::max(1, settings.agentIntervalMinutes)));
    configuration.textfileDirectory = overrides.textfileDirectory;
    if (!configuration.textfileDirectory && settings.metricsTextfileDirectory)
        configuration.textfileDirectory = *settings.metricsTextfileDirectory;
    return configuration;
}

}  // namespace corvel
