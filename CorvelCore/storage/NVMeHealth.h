// The NVMe health log of one disk; every figure is absent when the drive or tool does not give it.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>

namespace corvel {

struct NVMeHealth {
    // One NVMe data unit is 1000 blocks of 512 bytes.
    static constexpr std::int64_t bytesPerDataUnit = 512000;

    std::optional<std::int64_t> percentageUsed;
    std::optional<std::int64_t> availableSpare;
    std::optional<std::int64_t> availableSpareThreshold;
    std::optional<double> temperatureCelsius;
    std::optional<std::int64_t> mediaErrors;
    std::optional<std::int64_t> errorLogEntries;
    std::optional<std::int64_t> powerOnHours;
    std::optional<std::int64_t> powerCycles;
    std::optional<std::int64_t> unsafeShutdowns;
    std::optional<std::int64_t> dataUnitsRead;
    std::optional<std::int64_t> dataUnitsWritten;

    std::optional<std::int64_t> bytesRead() const;
    std::optional<std::int64_t> bytesWritten() const;

    bool operator==(const NVMeHealth&) const = default;
};

CORVEL_JSON_RECORD(NVMeHealth, percentageUsed, availableSpare, availableSpareThreshold, temperatureCelsius, mediaErrors, errorLogEntries, powerOnHours, powerCycles, unsafeShutdowns, dataUnitsRead, dataUnitsWritten)

}  // namespace corvel
