// The history of each volume as people read it: its samples, the trend of its free space per day
// and, when the trend is long enough and falling, the days until it is full.
//
//   for (const auto& volume : VolumeHistory::group(history.allSamples(), CapacityForecast::standardMinimumSpan))
//       print(volume.volumeName, Sparkline::text(volume.availableSeries(), 32), volume.daysUntilFull);
#pragma once

#include "monitoring/VolumeSample.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct VolumeHistory {
    std::string volumeID;
    std::string volumeName;              // the newest sample's name (a volume may be renamed)
    std::vector<VolumeSample> samples;   // oldest first
    std::optional<double> trendBytesPerDay;
    std::optional<double> daysUntilFull;

    const VolumeSample& latest() const { return samples.back(); }
    // The free space of every sample, oldest first.
    std::vector<double> availableSeries() const;

    // The forecast in words, or why there is none: "fills in about 12 days at the current trend",
    // "free space is not shrinking", "no forecast before 24 hours of samples (2 h so far)".
    std::string forecastText(double minimumSpan) const;

    // One entry per volume, in the order the volumes first appear; every entry has a sample.
    static std::vector<VolumeHistory> group(const std::vector<VolumeSample>& samples, double minimumSpan);

    bool operator==(const VolumeHistory&) const = default;
};

namespace Sparkline {

// `values` drawn as at most `width` block characters ("▁" lowest … "█" highest), averaged into
// equal runs when there are more values than cells. A flat series is a flat middle line.
std::string text(const std::vector<double>& values, std::size_t width);

}  // namespace Sparkline
}  // namespace corvel
