// A network of the engine; listed so that a Compose project's whole footprint can be shown.
#pragma once

#include "common/Json.h"

#include <optional>
#include <string>

namespace corvel {

struct DockerNetwork {
    std::string id;
    std::string name;
    std::string driver;
    std::string scope;
    std::optional<std::string> composeProject;

    bool operator==(const DockerNetwork&) const = default;
};

CORVEL_JSON_RECORD(DockerNetwork, id, name, driver, scope, composeProject)

}  // namespace corvel
