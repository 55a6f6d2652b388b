// How dangerous removing a piece of data would be. Only green and yellow data may ever be offered
// for cleanup; red (protected) and gray (unknown) never are.
//
// Risks sort by severity, not by declaration order, so that a list sorted by risk ends with the
// data we know least about just before the data we must protect:
//
//   std::vector risks{CleanupRisk::red, CleanupRisk::gray, CleanupRisk::green};
//   std::sort(risks.begin(), risks.end());      // green, gray, red
#pragma once

#include "common/EnumTable.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace corvel {

enum class CleanupRisk : std::uint8_t { green, yellow, red, gray };

template <>
struct EnumTable<CleanupRisk> {
    static constexpr std::array<EnumEntry<CleanupRisk>, 4> entries{{
        {CleanupRisk::green, "green", "Low risk", Tone::good},
        {CleanupRisk::yellow, "yellow", "Review", Tone::caution},
        {CleanupRisk::red, "red", "Protected", Tone::bad},
        {CleanupRisk::gray, "gray", "Unknown", Tone::muted},
    }};
};

CORVEL_ENUM_JSON(CleanupRisk)

namespace detail {

// The columns of the risk table that EnumTable has no place for, indexed by the enum's value.
struct CleanupRiskFacts {
    std::string_view explanation;
    bool isCleanupEligible;
    int severityRank;
};

inline constexpr std::array<CleanupRiskFacts, 4> cleanupRiskFacts{{
    {"Regenerable, low-risk data. Eligible for cleanup once usage is verified.", true, 0},
    {"Caches, builds or files that existing projects may still need. Review before cleanup.", true, 1},
    {"Databases, Docker volumes, credentials, personal data, files in use or without backup. "
     "Never offered for cleanup.",
     false, 3},
    {"Origin or impact unknown. Never offered for cleanup.", false, 2},
}};

}  // namespace detail

// The sentence shown with the risk ("Origin or impact unknown. Never offered for cleanup.").
constexpr std::string_view explanation(CleanupRisk risk) {
    return detail::cleanupRiskFacts[static_cast<std::size_t>(risk)].explanation;
}

constexpr bool isCleanupEligible(CleanupRisk risk) {
    return detail::cleanupRiskFacts[static_cast<std::size_t>(risk)].isCleanupEligible;
}

// green 0, yellow 1, gray 2, red 3.
constexpr int severityRank(CleanupRisk risk) {
    return detail::cleanupRiskFacts[static_cast<std::size_t>(risk)].severityRank;
}

// These replace the built-in comparisons of the enum (which would follow the declaration order).
constexpr bool operator<(CleanupRisk a, CleanupRisk b) {
    return severityRank(a) < severityRank(b);
}
constexpr bool operator>(CleanupRisk a, CleanupRisk b) {
    return severityRank(a) > severityRank(b);
}
constexpr bool operator<=(CleanupRisk a, CleanupRisk b) {
    return severityRank(a) <= severityRank(b);
}
constexpr bool operator>=(CleanupRisk a, CleanupRisk b) {
    return severityRank(a) >= severityRank(b);
}

}  // namespace corvel
