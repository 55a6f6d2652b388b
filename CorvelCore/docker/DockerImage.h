// An image held by the engine, with the shared and unique sizes its layers account for.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct DockerImage {
    std::string id;
    std::string repository;
    std::string tag;
    std::int64_t sizeBytes = 0;
    std::optional<std::int64_t> sharedBytes;
    std::optional<std::int64_t> uniqueBytes;
    std::int64_t containers = 0;  // how many containers use it

    // "repository:tag", or the repository alone for an untagged image.
    std::string reference() const;

    bool operator==(const DockerImage&) const = default;
};

CORVEL_JSON_RECORD(DockerImage, id, repository, tag, sizeBytes, sharedBytes, uniqueBytes, containers)

}  // namespace corvel
