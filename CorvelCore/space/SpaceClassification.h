// The catalogue's verdict on one path: what kind of data it is, how risky removing it would be,
// who owns it, one sentence saying why, and optionally the owner's own cleanup procedure.
//
//   {"category": "Caches", "risk": "green", "application": "Safari",
//    "rationale": "Application cache. ...", "hint": "..."}      // absent optionals are absent keys
#pragma once

#include "common/Json.h"
#include "space/CleanupRisk.h"
#include "space/SpaceCategory.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace corvel {

struct SpaceClassification {
    SpaceCategory category = SpaceCategory::other;
    CleanupRisk risk = CleanupRisk::gray;
    std::optional<std::string> application;
    std::string rationale;
    std::optional<std::string> hint;

    // Other, gray, no owner: what every path gets that no rule recognises.
    static const SpaceClassification& unknown();

    bool operator==(const SpaceClassification&) const = default;
};

CORVEL_JSON_RECORD(SpaceClassification, category, risk, application, rationale, hint)

}  // namespace corvel

template <>
struct std::hash<corvel::SpaceClassification> {
    std::size_t operator()(const corvel::SpaceClassification& classification) const noexcept;
};
