// What one Compose project (or the standalone containers together) costs: its containers'
// writable layers, the volumes they use and the images they run.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DockerProjectUsage {
    std::string name;  // the Compose project, or "Standalone"
    std::int64_t containers = 0;
    std::int64_t runningContainers = 0;
    std::int64_t volumes = 0;
    std::int64_t containerBytes = 0;
    std::int64_t volumeBytes = 0;
    std::int64_t imageBytes = 0;
    std::vector<std::string> imageIDs;
    std::vector<std::string> bindSources;
    std::optional<std::string> workingDirectory;

    // containerBytes + volumeBytes + imageBytes; an overflow is a fault, not a wrap.
    std::int64_t totalBytes() const;

    bool operator==(const DockerProjectUsage&) const = default;
};

CORVEL_JSON_RECORD(DockerProjectUsage, name, containers, runningContainers, volumes, containerBytes, volumeBytes, imageBytes, imageIDs, bindSources, workingDirectory)

}  // namespace corvel
