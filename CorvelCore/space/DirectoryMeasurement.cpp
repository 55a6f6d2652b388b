#include "space/DirectoryMeasurement.h"

namespace corvel {

void to_json(Json& json, const DirectoryMeasurement& measurement) {
    json = Json{{"allocatedBytes", measurement.allocatedBytes},
                {"fileCount", measurement.fileCount},
                {"measuredAt", measurement.measuredAt},
                {"wasCancelled", measurement.wasCancelled},
                {"failures", measurement.failures}};
}

void from_json(const Json& json, DirectoryMeasurement& measurement) {
    measurement.allocatedBytes = required<std::int64_t>(json, "allocatedBytes");
    measurement.fileCount = required<std::int64_t>(json, "fileCount");
    measurement.measuredAt = required<TimePoint>(json, "measuredAt");
    measurement.wasCancelled = required<bool>(json, "wasCancelled");
    // Measurements saved before failures were counted have none.
    measurement.failures = valueOr<WalkFailures>(json, "failures", {});
}

}  // namespace corvel
