#include "docker/DockerContainer.h"

namespace corvel {

void to_json(Json& j, const DockerContainer& container) {
    j = Json{{"id", container.id},
             {"name", container.name},
             {"image", container.image},
             {"state", container.state},
             {"status", container.status}};
    putOptional(j, "composeProject", container.composeProject);
    putOptional(j, "composeService", container.composeService);
    putOptional(j, "composeWorkingDirectory", container.composeWorkingDirectory);
    putOptional(j, "sizeBytes", container.sizeBytes);
    j["ports"] = container.ports;
    j["mounts"] = container.mounts;
}

void from_json(const Json& j, DockerContainer& container) {
    container.id = required<std::string>(j, "id");
    container.name = required<std::string>(j, "name");
    container.image = required<std::string>(j, "image");
    container.state = required<std::string>(j, "state");
    container.status = required<std::string>(j, "status");
    container.composeProject = optionalValue<std::string>(j, "composeProject");
    container.composeService = optionalValue<std::string>(j, "composeService");
    container.composeWorkingDirectory = optionalValue<std::string>(j, "composeWorkingDirectory");
    container.sizeBytes = optionalValue<std::int64_t>(j, "sizeBytes");
    container.ports = required<std::string>(j, "ports");
    container.mounts = required<std::vector<DockerMount>>(j, "mounts");
}

}  // namespace corvel
