// The cleanup history: the last 200 simulations in "cleanup-simulations.json" in the data folder,
// oldest first, so that a person can look at a plan again before acting on it.
//
//   auto history = CleanupHistory::open(machine.dataFolder());
//   history.append(simulation);                         // throws FileError; kept in memory
//   auto found = CleanupHistory::find(history.all(), "3F2A");   // by id or a unique start of it
#pragma once

#include "cleanup/CleanupSimulation.h"
#include "common/JSONHistory.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

using CleanupHistoryStore = JSONHistory<CleanupSimulation>;

namespace CleanupHistory {

inline constexpr const char* fileName = "cleanup-simulations.json";
inline constexpr std::size_t limit = 200;

// The history kept in `dataFolder`; nothing is read until it is first asked.
inline CleanupHistoryStore open(const std::filesystem::path& dataFolder) {
    return CleanupHistoryStore(dataFolder / fileName, limit);
}

// An id that names no simulation, or more than one.
class LookupError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The simulation whose id is `id`, or the only one whose id starts with it (ignoring case, at
// least four characters). Throws LookupError naming `id` otherwise.
CleanupSimulation find(const std::vector<CleanupSimulation>& simulations, const std::string& id);

// The newest `count` simulations, newest first.
std::vector<CleanupSimulation> newestFirst(std::vector<CleanupSimulation> simulations, std::size_t count);

}  // namespace CleanupHistory
}  // namespace corvel
