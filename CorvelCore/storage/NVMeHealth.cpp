#include "storage/NVMeHealth.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::optional<std::int64_t> NVMeHealth::bytesRead() const {
    if (!dataUnitsRead) return std::nullopt;
    return checkedMultiply(*dataUnitsRead, bytesPerDataUnit);
}

std::optional<std::int64_t> NVMeHealth::bytesWritten() const {
    if (!dataUnitsWritten) return std::nullopt;
    return checkedMultiply(*dataUnitsWritten, bytesPerDataUnit);
}

void to_json(Json& j, const NVMeHealth& h) {
    j = Json::object();
    putOptional(j, "percentageUsed", h.percentageUsed);
    putOptional(j, "availableSpare", h.availableSpare);
    putOptional(j, "availableSpareThreshold", h.availableSpareThreshold);
    putOptional(j, "temperatureCelsius", h.temperatureCelsius);
    putOptional(j, "mediaErrors", h.mediaErrors);
    putOptional(j, "errorLogEntries", h.errorLogEntries);
    putOptional(j, "powerOnHours", h.powerOnHours);
    putOptional(j, "powerCycles", h.powerCycles);
    putOptional(j, "unsafeShutdowns", h.unsafeShutdowns);
    putOptional(j, "dataUnitsRead", h.dataUnitsRead);
    putOptional(j, "dataUnitsWritten", h.dataUnitsWritten);
}

void from_json(const Json& j, NVMeHealth& h) {
    h.percentageUsed = optionalValue<std::int64_t>(j, "percentageUsed");
    h.availableSpare = optionalValue<std::int64_t>(j, "availableSpare");
    h.availableSpareThreshold = optionalValue<std::int64_t>(j, "availableSpareThreshold");
    h.temperatureCelsius = optionalValue<double>(j, "temperatureCelsius");
    h.mediaErrors = optionalValue<std::int64_t>(j, "mediaErrors");
    h.errorLogEntries = optionalValue<std::int64_t>(j, "errorLogEntries");
    h.powerOnHours = optionalValue<std::int64_t>(j, "powerOnHours");
    h.powerCycles = optionalValue<std::int64_t>(j, "powerCycles");
    h.unsafeShutdowns = optionalValue<std::int64_t>(j, "unsafeShutdowns");
    h.dataUnitsRead = optionalValue<std::int64_t>(j, "dataUnitsRead");
    h.dataUnitsWritten = optionalValue<std::int64_t>(j, "dataUnitsWritten");
}

}  // namespace corvel
