// Files that are probably copies of each other: the same length and the same content digest.
// Hard links and clones of one another are never listed as duplicates, since removing them would
// free nothing.
//
//   {"fileBytes": 20971520, "contentHash": "9f86…", "paths": ["/a/x.dmg", "/b/x.dmg"]}
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

struct DuplicateGroup {
    std::int64_t fileBytes = 0;   // allocated size of one copy
    std::string contentHash;      // SHA-256 of the contents, lower-case hex
    std::vector<std::string> paths;  // sorted

    // What keeping a single copy would free.
    std::int64_t reclaimableBytes() const;

    bool operator==(const DuplicateGroup&) const = default;
};

void to_json(Json& j, const DuplicateGroup& group);
void from_json(const Json& j, DuplicateGroup& group);

}  // namespace corvel
