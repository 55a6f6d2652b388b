// One row of the engine's own disk-usage summary (Images, Containers, Local Volumes, Build
// Cache), including what the engine itself calls reclaimable.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <string>

namespace corvel {

struct DockerDiskUsageLine {
    std::string type;
    std::int64_t total = 0;
    std::int64_t active = 0;
    std::int64_t sizeBytes = 0;
    std::int64_t reclaimableBytes = 0;

    bool operator==(const DockerDiskUsageLine&) const = default;
};

CORVEL_JSON_RECORD(DockerDiskUsageLine, type, total, active, sizeBytes, reclaimableBytes)

}  // namespace corvel
