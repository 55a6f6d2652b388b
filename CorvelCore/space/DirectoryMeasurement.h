// The allocated size of one folder (or file) as measured at a point in time, with what could not
// be read on the way.
#pragma once

#include <cstdint>

#include "common/ISO8601.h"
#include "common/Json.h"
#include "space/WalkFailures.h"

namespace corvel {

struct DirectoryMeasurement {
    std::int64_t allocatedBytes = 0;
    std::int64_t fileCount = 0;
    TimePoint measuredAt{};
    bool wasCancelled = false;
    WalkFailures failures;

    bool operator==(const DirectoryMeasurement&) const = default;
};

void to_json(Json& json, const DirectoryMeasurement& measurement);
void from_json(const Json& json, DirectoryMeasurement& measurement);

}  // namespace corvel
