// When a volume will be full if free space keeps shrinking as it has: a least-squares line
// through the samples' free space over time.
//
//   auto days = CapacityForecast::daysUntilFull(history.samples(volume.id), CapacityForecast::standardMinimumSpan);
//   if (days) show(CapacityForecast::describe(*days));   // "fills in about 12 days at the current trend"
#pragma once

#include "monitoring/VolumeSample.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::CapacityForecast {

// The shortest history we forecast from, in seconds: a trend over less than a day mostly
// measures one build, download or cache clean-up rather than how a volume is filling.
inline constexpr double standardMinimumSpan = 86400;

// Days (fractional) until free space reaches zero at the current trend. Absent with fewer than
// two samples, a span shorter than `minimumSpan` seconds, or free space that is not shrinking.
std::optional<double> daysUntilFull(std::vector<VolumeSample> samples, double minimumSpan);

// The least-squares change of free space in bytes per day (negative while it shrinks). Absent with
// fewer than two samples or when they all share one instant.
std::optional<double> trendBytesPerDay(std::vector<VolumeSample> samples);

// "fills in about 12 days at the current trend"; under a day: "fills in less than a day at the
// current trend".
std::string describe(double days);
// The same, short enough for a table: "full in about 12 days", "full within a day".
std::string describeBriefly(double days);

}  // namespace corvel::CapacityForecast
