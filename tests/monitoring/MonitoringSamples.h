// Samples at whole days and gigabytes, so each test states a history in one line.
#pragma once

#include "monitoring/VolumeSample.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace corvel::testing {

inline constexpr std::int64_t GB = 1000LL * 1000 * 1000;

inline TimePoint day(double days) {
    static const TimePoint origin = *ISO8601::parse("2026-11-01T00:00:00Z");
    return origin + std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double>(days * 86400));
}

inline VolumeSample sample(const std::string& volumeID, double days, double freeGB, std::int64_t totalGB = 500) {
    return {volumeID, "Volume " + volumeID, day(days), totalGB * GB, static_cast<std::int64_t>(freeGB * GB)};
}

}  // namespace corvel::testing
