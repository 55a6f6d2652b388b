// How serious a finding is. Ordered by raw value so that `a < b` means "less serious", and
// written to JSON as that integer, which is what stored reports and the agent exchange.
//
//   Severity::warning < Severity::critical;  label(Severity::ok) == "Healthy"
#pragma once

#include "common/EnumTable.h"

#include <array>
#include <optional>

namespace corvel {

enum class Severity : int { ok = 0, info = 1, warning = 2, critical = 3 };

template <>
struct EnumTable<Severity> {
    static constexpr std::array<EnumEntry<Severity>, 4> entries{{
        {Severity::ok, "ok", "Healthy", Tone::good},
        {Severity::info, "info", "Info", Tone::notice},
        {Severity::warning, "warning", "Warning", Tone::caution},
        {Severity::critical, "critical", "Critical", Tone::bad},
    }};
};

// Absent for any integer outside 0...3.
std::optional<Severity> severityFromRawValue(long long raw);

// Warnings and criticals are the findings someone has to act on; info and ok never are.
constexpr bool isActionable(Severity severity) {
    return severity >= Severity::warning;
}

void to_json(Json& j, Severity severity);
void from_json(const Json& j, Severity& severity);

}  // namespace corvel
