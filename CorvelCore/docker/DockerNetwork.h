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

void to_json(Json& j, const DockerNetwork& network);
void from_json(const Json& j, DockerNetwork& network);

}  // namespace corvel
