// Files that are probably copies of each other: the same length and the same content digest.
// Hard links and clones of one another are never listed as duplicates, since removing them would
// free nothing.
//
//   {"logicalBytes": 20971520, "allocatedBytes": 20975616, "contentHash": "9f86…",
//    "paths": ["/a/x.dmg", "/b/x.dmg"]}
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct DuplicateGroup {
    std::int64_t logicalBytes = 0;    // length of each copy
    std::int64_t allocatedBytes = 0;  // the smallest allocation among the copies
    std::string contentHash;      // SHA-256 of the contents, lower-case hex
    std::vector<std::string> paths;  // sorted

    // What keeping a single copy would free.
    std::int64_t reclaimableBytes() const;

    bool operator==(const DuplicateGroup&) const = default;
};

CORVEL_JSON_RECORD(DuplicateGroup, logicalBytes, allocatedBytes, contentHash, paths)

}  // namespace corvel
