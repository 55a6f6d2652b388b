// The traffic light of one health dimension. `unknown` is deliberately distinct from `normal`:
// it means nothing proved the dimension healthy, not that something is wrong.
//
//   healthStatusFor(Severity::warning) == HealthStatus::attention
#pragma once

#include "common/EnumTable.h"
#include "diagnostics/Severity.h"

#include <array>

namespace corvel {

enum class HealthStatus { unknown, normal, attention, critical };

template <>
struct EnumTable<HealthStatus> {
    static constexpr std::array<EnumEntry<HealthStatus>, 4> entries{{
        {HealthStatus::unknown, "unknown", "Unknown", Tone::muted},
        {HealthStatus::normal, "normal", "Normal", Tone::good},
        {HealthStatus::attention, "attention", "Attention", Tone::caution},
        {HealthStatus::critical, "critical", "Critical", Tone::bad},
    }};
};
CORVEL_ENUM_JSON(HealthStatus)

// ok and info are normal, warning is attention, critical is critical.
constexpr HealthStatus healthStatusFor(Severity severity) {
    if (severity == Severity::critical) return HealthStatus::critical;
    if (severity == Severity::warning) return HealthStatus::attention;
    return HealthStatus::normal;
}

}  // namespace corvel
