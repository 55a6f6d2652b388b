// A selected item the safety rules keep out of a cleanup, with the sentence that says why.
//
//   {"candidate": {...}, "reason": "Classified GRAY: Origin or impact unknown. Never offered for cleanup."}
#pragma once

#include "cleanup/CleanupCandidate.h"
#include "common/Json.h"

#include <string>

namespace corvel {

struct CleanupExclusion {
    CleanupCandidate candidate;
    std::string reason;

    bool operator==(const CleanupExclusion&) const = default;
};

CORVEL_JSON_RECORD(CleanupExclusion, candidate, reason)

}  // namespace corvel
