#include "docker/DockerNetwork.h"

namespace corvel {

void to_json(Json& j, const DockerNetwork& network) {
    j = Json{{"id", network.id}, {"name", network.name}, {"driver", network.driver}, {"scope", network.scope}};
    putOptional(j, "composeProject", network.composeProject);
}

void from_json(const Json& j, DockerNetwork& network) {
    network.id = required<std::string>(j, "id");
    network.name = required<std::string>(j, "name");
    network.driver = required<std::string>(j, "driver");
    network.scope = required<std::string>(j, "scope");
    network.composeProject = optionalValue<std::string>(j, "composeProject");
}

}  // namespace corvel
