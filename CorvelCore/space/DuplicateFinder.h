// Finds duplicate candidates among the files a scan kept: files of one length are compared by a
// digest of their first 64 KiB, and those that still agree by a SHA-256 of their whole content.
// Hard links (one inode) and clones of one another (same first physical block) are one file
// here, because deleting one of them would free nothing.
//
// Sparse files (far fewer bytes allocated than their length says) are left out: reading one
// reads its holes as zeros, so two empty 10 GB disk images would take minutes to compare, and
// removing a copy frees only the little it allocates. The search says how many it left out.
// Hashing polls `isCancelled` between blocks and counts hashed candidates in the ScanProgress.
//
//   ScanProgress progress;
//   auto search = DuplicateFinder::find(candidates, 4, progress, [] { return false; });
//   // search.groups: largest reclaimable first; each group's paths sorted
#pragma once

#include "space/DuplicateGroup.h"
#include "space/ScanProgress.h"

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

// Left out as sparse: less than half of the length is allocated.
bool isSparse(const Candidate& candidate);

struct Search {
    std::vector<DuplicateGroup> groups;
    std::int64_t sparseLeftOut = 0;  // candidates not hashed because they are sparse

    bool operator==(const Search&) const = default;
};

// Groups of two or more candidates of equal length, after folding hard links and clones of one
// another into one member each. Pure; groups ordered by length, largest first.
std::vector<std::vector<Candidate>> sameLengthGroups(std::vector<Candidate> candidates);

// SHA-256 (lower-case hex) of the first `limit` bytes of a file, or of all of it when `limit` is
// negative; absent when the file cannot be read or `isCancelled` (polled between blocks) answers
// true.
std::optional<std::string> digest(const std::string& path, std::int64_t limit,
                                  const std::function<bool()>& isCancelled = nullptr);

// The duplicate groups, largest reclaimable space first. Files that cannot be read are left out.
// Hashing runs on up to `threads` threads and stops early when `isCancelled` answers true.
Search find(std::vector<Candidate> candidates, unsigned threads, ScanProgress& progress,
            const std::function<bool()>& isCancelled);

}  // namespace corvel::DuplicateFinder
