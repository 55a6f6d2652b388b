#include "space/WalkFailures.h"

#include <algorithm>
#include <cstring>

namespace corvel {

FailureCount& WalkFailures::countFor(std::int32_t errorNumber) {
    const auto found = std::lower_bound(byError.begin(), byError.end(), errorNumber,
                                        [](const FailureCount& count, std::int32_t e) { return count.errorNumber < e; });
    if (found != byError.end() && found->errorNumber == errorNumber) return *found;
    return *byError.insert(found, FailureCount{errorNumber, std::strerror(errorNumber), 0, 0});
}

void WalkFailures::folderFailed(std::int32_t errorNumber, std::string path) {
    countFor(errorNumber).folders += 1;
    if (deniedFolders.size() < keptFolderPaths) deniedFolders.push_back(std::move(path));
}

void WalkFailures::fileFailed(std::int32_t errorNumber) { countFor(errorNumber).files += 1; }

void WalkFailures::merge(const WalkFailures& other) {
    for (const FailureCount& count : other.byError) {
        FailureCount& mine = countFor(count.errorNumber);
        mine.folders += count.folders;
        mine.files += count.files;
    }
    for (const std::string& path : other.deniedFolders) {
        if (deniedFolders.size() >= keptFolderPaths) break;
        deniedFolders.push_back(path);
    }
}

std::int64_t WalkFailures::folders() const {
    std::int64_t total = 0;
    for (const FailureCount& count : byError) total += count.folders;
    return total;
}

std::int64_t WalkFailures::files() const {
    std::int64_t total = 0;
    for (const FailureCount& count : byError) total += count.files;
    return total;
}

}  // namespace corvel
