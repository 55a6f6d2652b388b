// What a cleanup of a selection would do, worked out without touching a file: the items that pass
// every safety rule, those that do not (each with its reason), the volume's free space when it was
// simulated, and the fixed statements shown with the result. Immutable once made; kept in the
// cleanup history.
//
//   CleanupSimulation simulation = CleanupPlanner::simulate(...);
//   simulation.estimatedRecoverableMinimum();   // exclusive bytes of the eligible items
//   simulation.projectedFreeAfter();            // free space plus that minimum
//
// The JSON keys are the field names in order; "mode" is always "simulation": nothing in Velmora
// deletes files, so no simulation can be turned into anything else.
#pragma once

#include "cleanup/CleanupCandidate.h"
#include "cleanup/CleanupExclusion.h"
#include "common/ISO8601.h"
#include "common/Json.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct CleanupSimulation {
    std::string id;  // a fresh UUID per simulation
    TimePoint createdAt{};
    std::string volumeName;
    std::vector<CleanupCandidate> eligible;  // in selection order
    std::vector<CleanupExclusion> excluded;  // in selection order
    std::int64_t volumeFreeBefore = 0;
    std::vector<std::string> checks;
    // A constant rather than a field, so that no code can make a simulation claim to be more.
    static constexpr std::string_view mode = "simulation";

    // What removal would surely free: the eligible items' exclusive bytes.
    std::int64_t estimatedRecoverableMinimum() const;
    // The upper bound if no block were shared: the eligible items' allocated bytes.
    std::int64_t estimatedRecoverableMaximum() const;
    // volumeFreeBefore plus the recoverable minimum.
    std::int64_t projectedFreeAfter() const;

    bool operator==(const CleanupSimulation&) const = default;
};

void to_json(Json& j, const CleanupSimulation& simulation);
// Refuses a record whose "mode" is missing or anything but "simulation".
void from_json(const Json& j, CleanupSimulation& simulation);

}  // namespace corvel
