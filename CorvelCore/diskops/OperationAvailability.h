// Whether an operation is listed for an object (applicable), whether it may start now (enabled),
// and the reason shown beside it.
#pragma once

#include "common/Json.h"
#include "diskops/DiskOperation.h"

#include <optional>
#include <string>

namespace corvel {

struct OperationAvailability {
    DiskOperation operation = DiskOperation::mount;
    bool isApplicable = false;
    bool isEnabled = false;
    std::optional<std::string> reason;

    bool operator==(const OperationAvailability&) const = default;
};

CORVEL_JSON_RECORD(OperationAvailability, operation, isApplicable, isEnabled, reason)

}  // namespace corvel
