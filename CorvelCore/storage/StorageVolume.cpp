#include "storage/StorageVolume.h"

#include "common/CheckedArithmetic.h"
#include "common/Text.h"

#include <algorithm>

namespace corvel {

std::int64_t StorageVolume::usedBytes() const {
    return std::max<std::int64_t>(
        checkedSubtract(checkedSubtract(totalBytes, availableBytes), reservedBytes.value_or(0)), 0);
}

double StorageVolume::usedFraction() const {
    const std::int64_t usable = checkedSubtract(totalBytes, std::max<std::int64_t>(reservedBytes.value_or(0), 0));
    if (totalBytes < 1 || usable < 1) return 0;
    return std::clamp(static_cast<double>(usedBytes()) / static_cast<double>(usable), 0.0, 1.0);
}

double StorageVolume::freeFraction() const {
    if (totalBytes < 1) return 0;
    return 1.0 - usedFraction();
}

std::string StorageVolume::fileSystemLabel() const {
    if (fileSystemName) return *fileSystemName;
    if (fileSystemType) return toUpper(*fileSystemType);
    return "Unknown";
}

}  // namespace corvel
