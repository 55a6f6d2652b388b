#include "storage/SmartctlReport.h"

#include <limits>

#include "common/Json.h"

namespace corvel {

namespace {

std::optional<std::int64_t> counter(const Json& log, const char* key) {
    auto it = log.find(key);
    if (it == log.end()) return std::nullopt;
    if (it->is_number_integer()) return it->get<std::int64_t>();
    if (it->is_number_unsigned()) {
        auto value = it->get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
        return static_cast<std::int64_t>(value);
    }
    return std::nullopt;
}

std::optional<std::int64_t> percent(const Json& log, const char* key) {
    auto value = counter(log, key);
    if (!value || *value < 0) return std::nullopt;
    return value;
}

NVMeHealth decodeNVMe(const Json& log) {
    NVMeHealth health;
    // smartctl already converts the composite temperature to Celsius.
    if (auto celsius = counter(log, "temperature")) health.temperatureCelsius = static_cast<double>(*celsius);
    health.percentageUsed = percent(log, "percentage_used");
    health.availableSpare = percent(log, "available_spare");
    health.availableSpareThreshold = percent(log, "available_spare_threshold");
    health.mediaErrors = counter(log, "media_errors");
    health.errorLogEntries = counter(log, "num_err_log_entries");
    health.powerOnHours = counter(log, "power_on_hours");
    health.powerCycles = counter(log, "power_cycles");
    health.unsafeShutdowns = counter(log, "unsafe_shutdowns");
    health.dataUnitsRead = counter(log, "data_units_read");
    health.dataUnitsWritten = counter(log, "data_units_written");
    return health;
}

}  // namespace

SmartctlReport SmartctlReport::decode(std::string_view json) {
    SmartctlReport report;
    Json document;
    try {
        document = Json::parse(json.begin(), json.end());
    } catch (const Json::exception&) {
        return report;
    }
    if (!document.is_object()) return report;

    if (auto status = document.find("smart_status"); status != document.end() && status->is_object()) {
        if (auto passed = status->find("passed"); passed != status->end() && passed->is_boolean()) {
            report.smartStatus = passed->get<bool>() ? SMARTStatus::verified : SMARTStatus::failing;
        }
    }
    if (report.smartStatus == SMARTStatus::unknown) {
        // A drive that answers but has no self-monitoring is a verdict of its own.
        auto support = document.find("smart_support");
        if (support != document.end() && support->is_object()) {
            auto available = support->find("available");
            if (available != support->end() && available->is_boolean() && !available->get<bool>()) {
                report.smartStatus = SMARTStatus::notSupported;
            }
        }
    }
    if (auto log = document.find("nvme_smart_health_information_log"); log != document.end() && log->is_object() &&
                                                                         !log->empty()) {
        report.nvme = decodeNVMe(*log);
    }
    return report;
}

}  // namespace corvel
