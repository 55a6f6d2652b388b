#include "diagnostics/Severity.h"

#include <string>

namespace corvel {

std::optional<Severity> severityFromRawValue(long long raw) {
    for (const auto& entry : allEntries<Severity>())
        if (static_cast<long long>(entry.value) == raw) return entry.value;
    return std::nullopt;
}

void to_json(Json& j, Severity severity) { j = static_cast<int>(severity); }

void from_json(const Json& j, Severity& severity) {
    if (!j.is_number_integer()) throw DecodingError("severity must be an integer from 0 to 3");
    const auto decoded = severityFromRawValue(j.get<long long>());
    if (!decoded) throw DecodingError("unknown severity " + j.dump());
    severity = *decoded;
}

}  // namespace corvel
