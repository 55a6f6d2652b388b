// One item proposed for a cleanup simulation, with the reason it was chosen.
//
//   {"candidate": {...}, "why": "Caches, green (pip): untouched for 92 days"}
#pragma once

#include "cleanup/CleanupCandidate.h"
#include "common/Json.h"

#include <string>

namespace corvel {

struct CleanupSuggestion {
    CleanupCandidate candidate;
    std::string why;

    bool operator==(const CleanupSuggestion&) const = default;
};

CORVEL_JSON_RECORD(CleanupSuggestion, candidate, why)

}  // namespace corvel
