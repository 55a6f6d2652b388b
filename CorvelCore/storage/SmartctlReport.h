// What `smartctl -j -a DEVICE` says about one disk's health, decoded without judgement:
// the verdict the drive gives and, for NVMe drives, its health log.
//
//   SmartctlReport report = SmartctlReport::decode(jsonText);   // never throws
#pragma once

#include <optional>
#include <string_view>

#include "storage/NVMeHealth.h"
#include "storage/SMARTStatus.h"

namespace corvel {

struct SmartctlReport {
    SMARTStatus smartStatus = SMARTStatus::unknown;
    std::optional<NVMeHealth> nvme;

    bool operator==(const SmartctlReport&) const = default;

    // The tool's JSON; text that is not JSON, or JSON without a verdict, gives an unknown status.
    static SmartctlReport decode(std::string_view json);
};

}  // namespace corvel
