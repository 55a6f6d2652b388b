#include "monitoring/VolumeHistory.h"

#include "monitoring/CapacityForecast.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <map>

namespace corvel {

std::vector<double> VolumeHistory::availableSeries() const {
    std::vector<double> series;
    series.reserve(samples.size());
    for (const auto& sample : samples) series.push_back(static_cast<double>(sample.availableBytes));
    return series;
}

namespace {

std::string hoursText(double seconds) {
    const auto hours = static_cast<long long>(seconds / 3600);
    if (hours < 1) return "less than an hour";
    return std::to_string(hours) + (hours == 1 ? " hour" : " hours");
}

}  // namespace

std::string VolumeHistory::forecastText(double minimumSpan) const {
    if (daysUntilFull) return CapacityForecast::describe(*daysUntilFull);
    const double span =
        samples.empty() ? 0 : std::chrono::duration<double>(samples.back().timestamp - samples.front().timestamp).count();
    if (samples.size() < 2 || span < minimumSpan)
        return "no forecast before " + hoursText(minimumSpan) + " of samples (" + hoursText(span) + " so far)";
    return "no forecast: free space is not shrinking";
}

std::vector<VolumeHistory> VolumeHistory::group(const std::vector<VolumeSample>& samples, double minimumSpan) {
    std::vector<VolumeHistory> volumes;
    std::map<std::string, std::size_t> index;
    for (const auto& sample : samples) {
        auto [found, inserted] = index.try_emplace(sample.volumeID, volumes.size());
        if (inserted) volumes.push_back({sample.volumeID, sample.volumeName, {}, std::nullopt, std::nullopt});
        volumes[found->second].samples.push_back(sample);
    }
    for (auto& volume : volumes) {
        std::stable_sort(volume.samples.begin(), volume.samples.end(),
                         [](const VolumeSample& a, const VolumeSample& b) { return a.timestamp < b.timestamp; });
        volume.volumeName = volume.samples.back().volumeName;
        volume.trendBytesPerDay = CapacityForecast::trendBytesPerDay(volume.samples);
        volume.daysUntilFull = CapacityForecast::daysUntilFull(volume.samples, minimumSpan);
    }
    return volumes;
}

namespace Sparkline {

std::string text(const std::vector<double>& values, std::size_t width) {
    static constexpr std::array<const char*, 8> blocks{"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    if (values.empty() || width == 0) return "";
    const std::size_t cells = std::min(width, values.size());
    std::vector<double> averaged(cells, 0);
    for (std::size_t cell = 0; cell < cells; ++cell) {
        const std::size_t begin = cell * values.size() / cells;
        const std::size_t end = (cell + 1) * values.size() / cells;
        double sum = 0;
        for (std::size_t i = begin; i < end; ++i) sum += values[i];
        averaged[cell] = sum / static_cast<double>(end - begin);
    }
    const auto [low, high] = std::minmax_element(averaged.begin(), averaged.end());
    const double range = *high - *low;
    std::string line;
    for (const double value : averaged) {
        const std::size_t level =
            range > 0 ? static_cast<std::size_t>(std::lround((value - *low) / range * (blocks.size() - 1))) : 3;
        line += blocks[std::min(level, blocks.size() - 1)];
    }
    return line;
}

}  // namespace Sparkline
}  // namespace corvel
