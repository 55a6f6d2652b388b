// A Compose project as "docker compose ls" knows it: its name, state and config files.
#pragma once

#include "common/Json.h"

#include <string>
#include <vector>

namespace corvel {

struct DockerComposeProject {
    std::string name;
    std::string status;  // such as "running(2)" or "exited(1)"
    std::vector<std::string> configFiles;

    bool operator==(const DockerComposeProject&) const = default;
};

CORVEL_JSON_RECORD(DockerComposeProject, name, status, configFiles)

}  // namespace corvel
