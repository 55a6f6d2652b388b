#include "monitoring/HistoryStore.h"

#include "common/AtomicFile.h"
#include "common/Json.h"

#include <algorithm>
#include <chrono>
#include <map>

namespace corvel {

HistoryStore::HistoryStore(std::filesystem::path fileURL, double retention, std::size_t maxSamplesPerVolume)
    : fileURL_(std::move(fileURL)), retention_(retention), maxSamplesPerVolume_(maxSamplesPerVolume) {}

std::string HistoryStore::corruptName(const std::filesystem::path& fileURL, TimePoint when) {
    // The ISO 8601 basic form: no ":" in a file name (Finder shows it as "/").
    std::string stamp;
    for (const char c : ISO8601::format(std::chrono::time_point_cast<std::chrono::seconds>(when)))
        if (c != '-' && c != ':') stamp += c;
    return fileURL.filename().string() + ".corrupt-" + stamp;
}

void HistoryStore::loadIfNeeded() {
    if (loaded_) return;
    loaded_ = true;
    try {
        const auto text = AtomicFile::read(fileURL_);
        if (!text) return;
        samples_ = parseJsonText(*text, fileURL_.string()).get<std::vector<VolumeSample>>();
        std::stable_sort(samples_.begin(), samples_.end(),
                         [](const VolumeSample& a, const VolumeSample& b) { return a.timestamp < b.timestamp; });
    } catch (const std::exception& error) {
        samples_.clear();
        corruptOnDisk_ = true;
        const std::string reason = error.what();
        loadProblem_ = (reason.rfind(fileURL_.string(), 0) == 0 ? reason : fileURL_.string() + ": " + reason) +
                       " (read as an empty history; kept aside as " + fileURL_.filename().string() +
                       ".corrupt-<date> before the next save)";
    }
}

void HistoryStore::keepCorruptFileAside(TimePoint now) {
    if (!corruptOnDisk_) return;
    const auto folder = fileURL_.parent_path();
    auto aside = folder / corruptName(fileURL_, now);
    for (int attempt = 2; std::filesystem::exists(aside) && attempt < 100; ++attempt)
        aside = folder / (corruptName(fileURL_, now) + "-" + std::to_string(attempt));
    std::error_code error;
    std::filesystem::rename(fileURL_, aside, error);
    // A file that vanished meanwhile needs no keeping; any other failure must not let us overwrite it.
    if (error && std::filesystem::exists(fileURL_))
        throw FileError("Could not keep the unreadable " + fileURL_.string() + " aside as " + aside.string() + ": " +
                        error.message());
    corruptOnDisk_ = false;
}

void HistoryStore::prune(TimePoint now) {
    const auto oldest = now - std::chrono::duration_cast<TimePoint::duration>(std::chrono::duration<double>(retention_));
    std::erase_if(samples_, [oldest](const VolumeSample& sample) { return sample.timestamp < oldest; });
    std::stable_sort(samples_.begin(), samples_.end(),
                     [](const VolumeSample& a, const VolumeSample& b) { return a.timestamp < b.timestamp; });
    std::map<std::string, std::size_t> perVolume;
    for (const auto& sample : samples_) ++perVolume[sample.volumeID];
    // Walking oldest first, a volume drops samples while it still has more than the limit.
    std::vector<VolumeSample> kept;
    kept.reserve(samples_.size());
    for (auto& sample : samples_) {
        auto& count = perVolume[sample.volumeID];
        if (count > maxSamplesPerVolume_) {
            --count;
            continue;
        }
        kept.push_back(std::move(sample));
    }
    samples_ = std::move(kept);
}

void HistoryStore::record(const std::vector<VolumeSample>& samples, TimePoint now) {
    const std::lock_guard lock(mutex_);
    loadIfNeeded();
    samples_.insert(samples_.end(), samples.begin(), samples.end());
    prune(now);
    keepCorruptFileAside(now);
    AtomicFile::write(fileURL_, Json(samples_).dump(1));
}

std::vector<VolumeSample> HistoryStore::allSamples() {
    const std::lock_guard lock(mutex_);
    loadIfNeeded();
    return samples_;
}

std::vector<VolumeSample> HistoryStore::samples(const std::string& volumeID) {
    const std::lock_guard lock(mutex_);
    loadIfNeeded();
    std::vector<VolumeSample> result;
    for (const auto& sample : samples_)
        if (sample.volumeID == volumeID) result.push_back(sample);
    return result;
}

std::optional<std::string> HistoryStore::loadProblem() {
    const std::lock_guard lock(mutex_);
    loadIfNeeded();
    return loadProblem_;
}

}  // namespace corvel
