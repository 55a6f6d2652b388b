// The limits the diagnostic rules judge against. A plain value kept in the user's settings; a
// default-constructed value is the standard set.
//
//   DiagnosticThresholds t;            // == DiagnosticThresholds::standard()
//   t.warningFreeFraction = 0.2;
//   if (auto problem = t.validationProblem()) …
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct DiagnosticThresholds {
    double warningFreeFraction = 0.15;           // free share below this: warning
    double criticalFreeFraction = 0.05;          // free share below this: critical
    std::int64_t warningFreeBytes = 30000000000;  // available below this: warning (large volumes only)
    std::int64_t criticalFreeBytes = 10000000000; // available below this: critical (large volumes only)
    int nvmeWearWarningPercent = 80;             // NVMe percentage used at or above this: wear finding
    double temperatureWarningCelsius = 70.0;     // NVMe temperature at or above this: heat finding

    static DiagnosticThresholds standard() { return {}; }

    // A sentence naming the first field that is out of range, or absent when every limit makes
    // sense. Settings refuse such values so that rules never judge against nonsense.
    std::optional<std::string> validationProblem() const;

    bool operator==(const DiagnosticThresholds&) const = default;
};

// Every key is optional when decoding: a settings file that names one threshold keeps the
// standard value of the others.
CORVEL_JSON_LENIENT(DiagnosticThresholds, warningFreeFraction, criticalFreeFraction, warningFreeBytes,
                    criticalFreeBytes, nvmeWearWarningPercent, temperatureWarningCelsius)

}  // namespace corvel
