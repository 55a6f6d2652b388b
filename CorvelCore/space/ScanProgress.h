// How far a space scan has got, as a value the walker updates with atomic counters and any front
// end polls at its own pace (the command line every 100 ms). The walker never calls into a user
// interface; it only bumps counters once per folder and, now and then, names the folder it is in.
//
//   ScanProgress progress;
//   std::thread walk([&] { SpaceScanner::scan(root, options, progress, isCancelled); });
//   auto now = progress.snapshot();   // files, bytes, folders, current folder
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

namespace corvel {

class ScanProgress {
public:
    struct Snapshot {
        std::int64_t files = 0;
        std::int64_t directories = 0;
        std::int64_t allocatedBytes = 0;
        std::int64_t deniedDirectories = 0;
        std::string currentFolder;
        // The duplicate search after the walk: candidates hashed so far of how many.
        std::int64_t hashedCandidates = 0;
        std::int64_t hashCandidates = 0;
        bool finished = false;

        bool operator==(const Snapshot&) const = default;
    };

    // Thread-safe; cheap enough to call once per folder.
    void addFolder(std::int64_t files, std::int64_t allocatedBytes, bool denied);
    // Skipped when another thread is naming a folder at the same moment: the name is only a hint.
    void setCurrentFolder(std::string_view path);
    // The duplicate search publishes how many of its candidates it has hashed.
    void setHashCandidates(std::int64_t total);
    void addHashedCandidate();
    void markFinished();

    Snapshot snapshot() const;

private:
    std::atomic<std::int64_t> files_{0};
    std::atomic<std::int64_t> directories_{0};
    std::atomic<std::int64_t> allocatedBytes_{0};
    std::atomic<std::int64_t> deniedDirectories_{0};
    std::atomic<std::int64_t> hashedCandidates_{0};
    std::atomic<std::int64_t> hashCandidates_{0};
    std::atomic<bool> finished_{false};
    mutable std::mutex folderMutex_;
    std::string currentFolder_;
};

}  // namespace corvel
