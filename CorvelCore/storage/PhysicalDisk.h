// One whole disk: not a partition and not a synthesized APFS container disk.
#pragma once

#include "common/Json.h"
#include "storage/NVMeHealth.h"
#include "storage/Partition.h"
#include "storage/SMARTStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct PhysicalDisk {
    std::string id;
    std::string mediaName;
    std::int64_t sizeBytes = 0;
    std::optional<std::string> busProtocol;
    bool isInternal = false;
    bool isEjectable = false;
    std::optional<bool> isSolidState;
    std::optional<std::string> partitionScheme;
    std::optional<std::int64_t> blockSize;
    SMARTStatus smartStatus = SMARTStatus::unknown;
    std::optional<NVMeHealth> nvme;
    std::vector<Partition> partitions;

    // The media name without the tool's " Media" suffix; the id when there is no name.
    std::string displayName() const;
    // "Internal" or "External", then " · " and the bus protocol when one is known.
    std::string connectionLabel() const;

    bool operator==(const PhysicalDisk&) const = default;
};

CORVEL_JSON_RECORD(PhysicalDisk, id, mediaName, sizeBytes, busProtocol, isInternal, isEjectable, isSolidState, partitionScheme, blockSize, smartStatus, nvme, partitions)

}  // namespace corvel
