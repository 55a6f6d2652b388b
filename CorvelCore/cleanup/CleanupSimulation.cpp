#include "cleanup/CleanupSimulation.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t CleanupSimulation::estimatedRecoverableMinimum() const {
    std::int64_t total = 0;
    for (const auto& candidate : eligible) total = checkedAdd(total, candidate.exclusiveBytes);
    return total;
}

std::int64_t CleanupSimulation::estimatedRecoverableMaximum() const {
    std::int64_t total = 0;
    for (const auto& candidate : eligible) total = checkedAdd(total, candidate.allocatedBytes);
    return total;
}

std::int64_t CleanupSimulation::projectedFreeAfter() const {
    return checkedAdd(volumeFreeBefore, estimatedRecoverableMinimum());
}

void to_json(Json& j, const CleanupSimulation& simulation) {
    j = Json::object();
    j["id"] = simulation.id;
    j["createdAt"] = simulation.createdAt;
    j["volumeName"] = simulation.volumeName;
    j["eligible"] = simulation.eligible;
    j["excluded"] = simulation.excluded;
    j["volumeFreeBefore"] = simulation.volumeFreeBefore;
    j["checks"] = simulation.checks;
    j["mode"] = CleanupSimulation::mode;
}

void from_json(const Json& j, CleanupSimulation& simulation) {
    jsonfield::expectObject(j, "CleanupSimulation");
    const auto mode = required<std::string>(j, "mode");
    if (mode != CleanupSimulation::mode)
        throw DecodingError("key 'mode': expected \"simulation\", not \"" + mode + "\"");
    simulation.id = required<std::string>(j, "id");
    simulation.createdAt = required<TimePoint>(j, "createdAt");
    simulation.volumeName = required<std::string>(j, "volumeName");
    simulation.eligible = required<std::vector<CleanupCandidate>>(j, "eligible");
    simulation.excluded = required<std::vector<CleanupExclusion>>(j, "excluded");
    simulation.volumeFreeBefore = required<std::int64_t>(j, "volumeFreeBefore");
    simulation.checks = required<std::vector<std::string>>(j, "checks");
}

}  // namespace corvel
