// One item a person selected for a cleanup simulation: where it is, what the catalogue says it is,
// and what removing it would free. Built from a scanned node, or field by field.
//
//   CleanupCandidate candidate = CleanupCandidate::from(node);   // a SpaceNode of a scan
//   candidate.exclusiveBytes;   // what removal would surely free (nothing shared with clones)
//
//   {"path": "/home/me/.cache/pip", "name": "pip", "classification": {...},
//    "allocatedBytes": 8192, "exclusiveBytes": 8192, "fileCount": 2,
//    "lastModified": "2026-11-02T09:30:00Z"}            // an unknown date is an absent key
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "space/SpaceClassification.h"
#include "space/SpaceNode.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct CleanupCandidate {
    std::string path;
    std::string name;
    SpaceClassification classification;
    std::int64_t allocatedBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::int64_t fileCount = 0;
    std::optional<TimePoint> lastModified;

    // Copies the node's own figures; its children play no part.
    static CleanupCandidate from(const SpaceNode& node);

    bool operator==(const CleanupCandidate&) const = default;
};

CORVEL_JSON_RECORD(CleanupCandidate, path, name, classification, allocatedBytes, exclusiveBytes, fileCount,
                   lastModified)

}  // namespace corvel
