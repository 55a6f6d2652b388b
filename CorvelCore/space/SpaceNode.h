// One node of a space scan: a folder, a file, or the aggregate of a folder's small items that the
// scan folded together so that a tree of a whole home folder stays readable and bounded.
//
// Sizes are the subtree's: `allocatedBytes` counts every block once per inode (hard links once),
// `exclusiveBytes` only the blocks that removing the node would free (blocks shared with clones,
// and hard-linked files whose other names lie outside the node, are not exclusive).
//
//   {"path": "/home/me/dev", "name": "dev", "isDirectory": true, "logicalBytes": 1200,
//    "allocatedBytes": 8192, "exclusiveBytes": 8192, "fileCount": 2, "directoryCount": 1,
//    "lastModified": "2026-11-02T09:30:00Z", "accessDenied": false, "aggregatedItems": 0,
//    "classification": {...}, "children": [...]}
//
// An aggregate node has `aggregatedItems` > 0, is not a directory, and carries its folder's path.
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "space/SpaceClassification.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct SpaceNode {
    std::string path;
    std::string name;
    bool isDirectory = false;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t fileCount = 0;
    std::int64_t directoryCount = 0;
    std::optional<TimePoint> lastModified;
    bool accessDenied = false;
    std::int64_t aggregatedItems = 0;
    SpaceClassification classification;
    std::vector<SpaceNode> children;

    // Whether this node stands for several small items rather than one path.
    bool isAggregate() const { return aggregatedItems > 0; }
    // Bytes this node shares with clones or with hard links outside it.
    std::int64_t sharedBytes() const;

    bool operator==(const SpaceNode&) const = default;
};

void to_json(Json& j, const SpaceNode& node);
void from_json(const Json& j, SpaceNode& node);

}  // namespace corvel
