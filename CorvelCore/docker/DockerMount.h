// One mount of a container as the engine reports it: a named volume, a host folder bound into
// the container, or a temporary file system.
#pragma once

#include "common/Json.h"

#include <optional>
#include <string>

namespace corvel {

struct DockerMount {
    std::string type;                 // "bind", "volume", "tmpfs", …
    std::string source;               // host path, or the volume's data path inside the engine
    std::string destination;          // path inside the container
    std::optional<std::string> name;  // the volume's name
    bool readWrite = false;

    bool operator==(const DockerMount&) const = default;
};

CORVEL_JSON_RECORD(DockerMount, type, source, destination, name, readWrite)

}  // namespace corvel
