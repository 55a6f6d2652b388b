// A host folder bound into a container: moving or deleting that folder breaks the container.
#pragma once

#include "docker/DockerContainer.h"

namespace corvel {

struct DockerBindMount {
    DockerContainer container;
    DockerMount mount;

    bool operator==(const DockerBindMount&) const = default;
};

CORVEL_JSON_RECORD(DockerBindMount, container, mount)

}  // namespace corvel
