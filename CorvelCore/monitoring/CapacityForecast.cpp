#include "monitoring/CapacityForecast.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fmt/format.h>

namespace corvel::CapacityForecast {
namespace {

constexpr double secondsPerDay = 86400;

void sortByTime(std::vector<VolumeSample>& samples) {
    std::stable_sort(samples.begin(), samples.end(),
                     [](const VolumeSample& a, const VolumeSample& b) { return a.timestamp < b.timestamp; });
}

double secondsBetween(TimePoint from, TimePoint to) {
    return std::chrono::duration<double>(to - from).count();
}

struct Fit {
    double slope = 0;        // bytes per second
    double denominator = 0;  // Σ(x − x̄)²
};

// Least squares over x = seconds since the first sample, y = available bytes; `samples` sorted.
Fit fit(const std::vector<VolumeSample>& samples) {
    const TimePoint origin = samples.front().timestamp;
    const double count = static_cast<double>(samples.size());
    double sumX = 0;
    double sumY = 0;
    for (const auto& sample : samples) {
        sumX += secondsBetween(origin, sample.timestamp);
        sumY += static_cast<double>(sample.availableBytes);
    }
    const double meanX = sumX / count;
    const double meanY = sumY / count;
    double numerator = 0;
    double denominator = 0;
    for (const auto& sample : samples) {
        const double dx = secondsBetween(origin, sample.timestamp) - meanX;
        numerator += dx * (static_cast<double>(sample.availableBytes) - meanY);
        denominator += dx * dx;
    }
    return {denominator > 0 ? numerator / denominator : 0, denominator};
}

}  // namespace

std::optional<double> daysUntilFull(std::vector<VolumeSample> samples, double minimumSpan) {
    sortByTime(samples);
    if (samples.size() < 2) return std::nullopt;
    if (secondsBetween(samples.front().timestamp, samples.back().timestamp) < minimumSpan) return std::nullopt;
    const Fit line = fit(samples);
    if (!(line.denominator > 0) || !(line.slope < 0)) return std::nullopt;
    return static_cast<double>(samples.back().availableBytes) / line.slope / -secondsPerDay;
}

std::optional<double> trendBytesPerDay(std::vector<VolumeSample> samples) {
    sortByTime(samples);
    if (samples.size() < 2) return std::nullopt;
    const Fit line = fit(samples);
    if (!(line.denominator > 0)) return std::nullopt;
    return line.slope * secondsPerDay;
}

std::string describe(double days) {
    if (days < 1) return "fills in less than a day at the current trend";
    const auto whole = static_cast<long long>(std::llround(days));
    return fmt::format("fills in about {} {} at the current trend", whole, whole == 1 ? "day" : "days");
}

std::string describeBriefly(double days) {
    if (days < 1) return "full within a day";
    const auto whole = static_cast<long long>(std::llround(days));
    return fmt::format("full in about {} {}", whole, whole == 1 ? "day" : "days");
}

}  // namespace corvel::CapacityForecast
