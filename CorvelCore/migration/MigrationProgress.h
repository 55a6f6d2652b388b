// How far a migration scan or a tree verification has got: counters the workers bump with
// atomics and a front end polls at its own pace, plus the phase it is in. Workers never call
// into a user interface.
//
//   MigrationProgress progress;
//   std::thread work([&] { TreeVerifier::compare(source, copy, {}, progress, isCancelled); });
//   auto now = progress.snapshot();   // "hashing", 120 files, 1.2 GB of 2 GB
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace corvel {

class MigrationProgress {
public:
    struct Snapshot {
        std::string phase;
        std::int64_t files = 0;
        std::int64_t bytes = 0;
        std::int64_t totalBytes = 0;  // 0 while unknown
        bool operator==(const Snapshot&) const = default;
    };

    void setPhase(std::string phase) {
        std::lock_guard lock(mutex_);
        phase_ = std::move(phase);
    }
    void addTotalBytes(std::int64_t bytes) { totalBytes_.fetch_add(bytes); }
    void addFile() { files_.fetch_add(1); }
    void addBytes(std::int64_t bytes) { bytes_.fetch_add(bytes); }

    Snapshot snapshot() const {
        std::lock_guard lock(mutex_);
        return {phase_, files_.load(), bytes_.load(), totalBytes_.load()};
    }

private:
    mutable std::mutex mutex_;
    std::string phase_;
    std::atomic<std::int64_t> files_{0};
    std::atomic<std::int64_t> bytes_{0};
    std::atomic<std::int64_t> totalBytes_{0};
};

}  // namespace corvel
