// Finds duplicate candidates among the files a scan kept: files of one length are compared by a
// digest of their first 64 KiB, and those that still agree by a SHA-256 of their whole content.
// Hard links (one inode) and clones of one another (same first physical block) are one file
// here, because deleting one of them would free nothing.
//
//   auto groups = DuplicateFinder::find(candidates, 4, [] { return false; });
//   // largest reclaimable first; each group's paths sorted
#pragma once

#include "space/DuplicateGroup.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvel::DuplicateFinder {

struct Candidate {
    std::string path;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t firstPhysicalOffset = -1;  // -1 where the file system shares no blocks

    bool operator==(const Candidate&) const = default;
};

inline constexpr std::int64_t sampleBytes = 64 * 1024;

// Groups of two or more candidates of equal length, after folding hard links and clones of one
// another into one member each. Pure; groups ordered by length, largest first.
std::vector<std::vector<Candidate>> sameLengthGroups(std::vector<Candidate> candidates);

// SHA-256 (lower-case hex) of the first `limit` bytes of a file, or of all of it when `limit` is
// negative; absent when the file cannot be read.
std::optional<std::string> digest(const std::string& path, std::int64_t limit);

// The duplicate groups, largest reclaimable space first. Files that cannot be read are left out.
// Hashing runs on up to `threads` threads and stops early when `isCancelled` answers true.
std::vector<DuplicateGroup> find(std::vector<Candidate> candidates, unsigned threads,
                                 const std::function<bool()>& isCancelled);

}  // namespace corvel::DuplicateFinder
