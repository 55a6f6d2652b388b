#include "cleanup/CleanupHistory.h"

#include "common/Text.h"

#include <algorithm>

namespace corvel::CleanupHistory {

CleanupSimulation find(const std::vector<CleanupSimulation>& simulations, const std::string& id) {
    for (const auto& simulation : simulations)
        if (simulation.id == id) return simulation;
    constexpr std::size_t shortestPrefix = 4;
    if (id.size() < shortestPrefix)
        throw LookupError("no simulation has the id '" + id + "' (give at least its first four characters)");
    const std::string wanted = toUpper(id);
    std::vector<const CleanupSimulation*> matches;
    for (const auto& simulation : simulations)
        if (toUpper(simulation.id).starts_with(wanted)) matches.push_back(&simulation);
    if (matches.empty()) throw LookupError("no simulation has an id starting with '" + id + "'");
    if (matches.size() > 1)
        throw LookupError("'" + id + "' starts " + std::to_string(matches.size()) +
                          " simulation ids; give more of the id");
    return *matches.front();
}

std::vector<CleanupSimulation> newestFirst(std::vector<CleanupSimulation> simulations, std::size_t count) {
    std::reverse(simulations.begin(), simulations.end());
    if (simulations.size() > count) simulations.resize(count);
    return simulations;
}

}  // namespace corvel::CleanupHistory
