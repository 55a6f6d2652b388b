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

}  // namespace corvel
