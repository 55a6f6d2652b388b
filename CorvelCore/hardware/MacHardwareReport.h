// The hardware-report tool's combined hardware, power, displays and USB report, read into a
// HardwareSummary. Lenient like every report parser: a section that is missing or shaped
// differently leaves its fields absent; only a document that is not JSON or has no hardware
// section ("SPHardwareDataType") at all is an error.
//
//   auto bytes = SystemProfilerClient::policy().run(MacHardwareReport::arguments, runner);
//   HardwareSummary summary = MacHardwareReport::parse(bytes);   // throws DecodingError
#pragma once

#include "common/Json.h"
#include "hardware/HardwareSummary.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel::MacHardwareReport {

inline const std::vector<std::string> arguments{"SPHardwareDataType", "SPPowerDataType", "SPDisplaysDataType",
                                                "SPUSBHostDataType", "-json"};

HardwareSummary parse(std::string_view json);
HardwareSummary fromDocument(const Json& document);

// "16 GB" (binary, as the report means it), "512 MB".
std::optional<std::int64_t> parseMemory(std::string_view text);
// "95%" → 0.95
std::optional<double> parsePercent(std::string_view text);

}  // namespace corvel::MacHardwareReport
