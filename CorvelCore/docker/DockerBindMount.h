// A host folder bound into a container: moving or deleting that folder breaks the container.
#pragma once

#include "docker/DockerContainer.h"

namespace corvel {

struct DockerBindMount {
    DockerContainer container;
    DockerMount mount;

    bool operator==(const DockerBindMount&) const = default;
};

void to_json(Json& j, const DockerBindMount& bind);
void from_json(const Json& j, DockerBindMount& bind);

}  // namespace corvel
