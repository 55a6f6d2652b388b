// The file (or, for an engine running natively on Linux, the folder) that holds all of the
// engine's data. It is measured from the host, so its cost is known even with the engine
// stopped; the allocated size is what it really costs because the image file is sparse.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct DockerDiskImage {
    std::string path;
    std::int64_t apparentBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::optional<std::string> volumeMountPoint;
    std::string source;  // how it was found, e.g. "Docker Desktop default location"

    bool operator==(const DockerDiskImage&) const = default;
};

CORVEL_JSON_RECORD(DockerDiskImage, path, apparentBytes, allocatedBytes, volumeMountPoint, source)

}  // namespace corvel
