// A container recognised, by its image, as a database server, together with the volumes that
// hold its data: the things a person must never lose to a careless prune.
//
//   DockerDatabase::engineFor("library/postgres:16") == "PostgreSQL"
#pragma once

#include "docker/DockerContainer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct DockerDatabase {
    DockerContainer container;
    std::string engine;  // display name, e.g. "PostgreSQL"
    std::vector<std::string> volumeNames;
    std::int64_t volumeBytes = 0;

    // The database engine an image reference names, by the start of its last path component.
    // (Named engineFor because the record already has a field called engine.)
    static std::optional<std::string> engineFor(std::string_view image);

    bool operator==(const DockerDatabase&) const = default;
};

CORVEL_JSON_RECORD(DockerDatabase, container, engine, volumeNames, volumeBytes)

}  // namespace corvel
