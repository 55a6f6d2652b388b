// A volume of the engine, with the Compose project that created it when it was one.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct DockerVolume {
    std::string name;
    std::string driver;
    std::optional<std::string> composeProject;
    std::optional<std::int64_t> sizeBytes;
    std::optional<std::int64_t> links;  // containers using it
    bool isAnonymous = false;

    bool operator==(const DockerVolume&) const = default;
};

CORVEL_JSON_RECORD(DockerVolume, name, driver, composeProject, sizeBytes, links, isAnonymous)

}  // namespace corvel
