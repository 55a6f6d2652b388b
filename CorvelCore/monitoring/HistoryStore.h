// The rolling free-space history of every volume, kept as "history.json" (one JSON array of
// VolumeSample) in the data folder. Read lazily on first use, kept in memory, rewritten whole and
// atomically by every record. Samples older than the retention go, and each volume keeps only its
// newest `maxSamplesPerVolume`.
//
//   HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
//   history.record(samples, machine.now());     // throws FileError; the samples stay in memory
//   auto days = CapacityForecast::daysUntilFull(history.samples(volume.id), CapacityForecast::standardMinimumSpan);
//
// A missing file is an empty history. A file that cannot be read or decoded also reads as empty
// (`loadProblem()` says why); the next record first moves it aside as
// "history.json.corrupt-<date>", so that nothing the user had is destroyed without a trace.
// Samples dated after `now` (a clock that jumped back) are kept until they age out normally.
#pragma once

#include "common/ISO8601.h"
#include "monitoring/VolumeSample.h"

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class HistoryStore {
public:
    static constexpr const char* fileName = "history.json";
    static constexpr double defaultRetention = 2592000;  // 30 days, in seconds
    static constexpr std::size_t defaultMaxSamplesPerVolume = 5000;

    static std::filesystem::path defaultURL(const std::filesystem::path& dataFolder) { return dataFolder / fileName; }

    explicit HistoryStore(std::filesystem::path fileURL, double retention = defaultRetention,
                          std::size_t maxSamplesPerVolume = defaultMaxSamplesPerVolume);

    const std::filesystem::path& fileURL() const { return fileURL_; }
    double retention() const { return retention_; }
    std::size_t maxSamplesPerVolume() const { return maxSamplesPerVolume_; }

    // Loads if needed, appends, prunes relative to `now`, then replaces the file. A failure to
    // create the folder or write the file throws FileError; the samples stay in memory.
    void record(const std::vector<VolumeSample>& samples, TimePoint now);

    // Every sample, oldest first.
    std::vector<VolumeSample> allSamples();
    // One volume's samples, oldest first.
    std::vector<VolumeSample> samples(const std::string& volumeID);

    // Why an existing file read as empty, and where it will be or was kept aside.
    std::optional<std::string> loadProblem();

    // The name an unreadable history is moved to: "history.json.corrupt-20261102T093000Z".
    static std::string corruptName(const std::filesystem::path& fileURL, TimePoint when);

private:
    void loadIfNeeded();
    void prune(TimePoint now);
    void keepCorruptFileAside(TimePoint now);

    std::filesystem::path fileURL_;
    double retention_;
    std::size_t maxSamplesPerVolume_;
    std::mutex mutex_;
    std::vector<VolumeSample> samples_;
    bool loaded_ = false;
    bool corruptOnDisk_ = false;
    std::optional<std::string> loadProblem_;
};

}  // namespace corvel
