// A container of any state, with its Compose labels, its size and its mounts.
#pragma once

#include "docker/DockerMount.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct DockerContainer {
    std::string id;
    std::string name;
    std::string image;
    std::string state;   // "running", "exited", …
    std::string status;  // free text such as "Up 3 hours"
    std::optional<std::string> composeProject;
    std::optional<std::string> composeService;
    std::optional<std::string> composeWorkingDirectory;
    std::optional<std::int64_t> sizeBytes;
    std::string ports;
    std::vector<DockerMount> mounts;

    bool operator==(const DockerContainer&) const = default;
};

CORVEL_JSON_RECORD(DockerContainer, id, name, image, state, status, composeProject, composeService, composeWorkingDirectory, sizeBytes, ports, mounts)

}  // namespace corvel
