#include "docker/DockerMount.h"

namespace corvel {

void to_json(Json& j, const DockerMount& mount) {
    j = Json{{"type", mount.type}, {"source", mount.source}, {"destination", mount.destination}};
    putOptional(j, "name", mount.name);
    j["readWrite"] = mount.readWrite;
}

void from_json(const Json& j, DockerMount& mount) {
    mount.type = required<std::string>(j, "type");
    mount.source = required<std::string>(j, "source");
    mount.destination = required<std::string>(j, "destination");
    mount.name = optionalValue<std::string>(j, "name");
    mount.readWrite = required<bool>(j, "readWrite");
}

}  // namespace corvel
