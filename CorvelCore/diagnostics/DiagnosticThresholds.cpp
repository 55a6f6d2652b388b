#include "diagnostics/DiagnosticThresholds.h"

#include <cmath>
#include <fmt/format.h>

namespace corvel {

namespace {

bool isFraction(double value) { return std::isfinite(value) && value >= 0.0 && value <= 1.0; }

}  // namespace

std::optional<std::string> DiagnosticThresholds::validationProblem() const {
    if (!isFraction(warningFreeFraction))
        return fmt::format("warningFreeFraction must be a fraction from 0 to 1, not {}", warningFreeFraction);
    if (!isFraction(criticalFreeFraction))
        return fmt::format("criticalFreeFraction must be a fraction from 0 to 1, not {}", criticalFreeFraction);
    if (criticalFreeFraction > warningFreeFraction)
        return fmt::format("criticalFreeFraction ({}) must not be above warningFreeFraction ({})",
                           criticalFreeFraction, warningFreeFraction);
    if (warningFreeBytes < 0) return fmt::format("warningFreeBytes must not be negative, not {}", warningFreeBytes);
    if (criticalFreeBytes < 0)
        return fmt::format("criticalFreeBytes must not be negative, not {}", criticalFreeBytes);
    if (criticalFreeBytes > warningFreeBytes)
        return fmt::format("criticalFreeBytes ({}) must not be above warningFreeBytes ({})", criticalFreeBytes,
                           warningFreeBytes);
    if (nvmeWearWarningPercent < 1 || nvmeWearWarningPercent > 1000)
        return fmt::format("nvmeWearWarningPercent must be from 1 to 1000, not {}", nvmeWearWarningPercent);
    if (!std::isfinite(temperatureWarningCelsius) || temperatureWarningCelsius <= 0.0 ||
        temperatureWarningCelsius > 200.0)
        return fmt::format("temperatureWarningCelsius must be above 0 and at most 200, not {}",
                           temperatureWarningCelsius);
    return std::nullopt;
}

}  // namespace corvel
