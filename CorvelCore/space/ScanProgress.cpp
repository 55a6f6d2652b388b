#include "space/ScanProgress.h"

namespace corvel {

void ScanProgress::addFolder(std::int64_t files, std::int64_t allocatedBytes, bool denied) {
    files_.fetch_add(files, std::memory_order_relaxed);
    directories_.fetch_add(1, std::memory_order_relaxed);
    allocatedBytes_.fetch_add(allocatedBytes, std::memory_order_relaxed);
    if (denied) deniedDirectories_.fetch_add(1, std::memory_order_relaxed);
}

void ScanProgress::setCurrentFolder(std::string_view path) {
    std::unique_lock lock(folderMutex_, std::try_to_lock);
    if (lock.owns_lock()) currentFolder_.assign(path);
}

void ScanProgress::setHashCandidates(std::int64_t total) {
    hashedCandidates_.store(0, std::memory_order_relaxed);
    hashCandidates_.store(total, std::memory_order_relaxed);
}

void ScanProgress::addHashedCandidate() {
    hashedCandidates_.fetch_add(1, std::memory_order_relaxed);
}

void ScanProgress::markFinished() {
    finished_.store(true, std::memory_order_release);
}

ScanProgress::Snapshot ScanProgress::snapshot() const {
    Snapshot result;
    result.files = files_.load(std::memory_order_relaxed);
    result.directories = directories_.load(std::memory_order_relaxed);
    result.allocatedBytes = allocatedBytes_.load(std::memory_order_relaxed);
    result.deniedDirectories = deniedDirectories_.load(std::memory_order_relaxed);
    result.hashedCandidates = hashedCandidates_.load(std::memory_order_relaxed);
    result.hashCandidates = hashCandidates_.load(std::memory_order_relaxed);
    result.finished = finished_.load(std::memory_order_acquire);
    std::lock_guard lock(folderMutex_);
    result.currentFolder = currentFolder_;
    return result;
}

}  // namespace corvel
