#include "docker/DockerVolume.h"

namespace corvel {

void to_json(Json& j, const DockerVolume& volume) {
    j = Json{{"name", volume.name}, {"driver", volume.driver}};
    putOptional(j, "composeProject", volume.composeProject);
    putOptional(j, "sizeBytes", volume.sizeBytes);
    putOptional(j, "links", volume.links);
    j["isAnonymous"] = volume.isAnonymous;
}

void from_json(const Json& j, DockerVolume& volume) {
    volume.name = required<std::string>(j, "name");
    volume.driver = required<std::string>(j, "driver");
    volume.composeProject = optionalValue<std::string>(j, "composeProject");
    volume.sizeBytes = optionalValue<std::int64_t>(j, "sizeBytes");
    volume.links = optionalValue<std::int64_t>(j, "links");
    volume.isAnonymous = required<bool>(j, "isAnonymous");
}

}  // namespace corvel
