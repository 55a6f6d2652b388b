#include "docker/DockerProjectUsage.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t DockerProjectUsage::totalBytes() const {
    return checkedAdd(checkedAdd(containerBytes, volumeBytes), imageBytes);
}

void to_json(Json& j, const DockerProjectUsage& usage) {
    j = Json{{"name", usage.name},
             {"containers", usage.containers},
             {"runningContainers", usage.runningContainers},
             {"volumes", usage.volumes},
             {"containerBytes", usage.containerBytes},
             {"volumeBytes", usage.volumeBytes},
             {"imageBytes", usage.imageBytes},
             {"imageIDs", usage.imageIDs},
             {"bindSources", usage.bindSources}};
    putOptional(j, "workingDirectory", usage.workingDirectory);
}

void from_json(const Json& j, DockerProjectUsage& usage) {
    usage.name = required<std::string>(j, "name");
    usage.containers = required<std::int64_t>(j, "containers");
    usage.runningContainers = required<std::int64_t>(j, "runningContainers");
    usage.volumes = required<std::int64_t>(j, "volumes");
    usage.containerBytes = required<std::int64_t>(j, "containerBytes");
    usage.volumeBytes = required<std::int64_t>(j, "volumeBytes");
    usage.imageBytes = required<std::int64_t>(j, "imageBytes");
    usage.imageIDs = required<std::vector<std::string>>(j, "imageIDs");
    usage.bindSources = required<std::vector<std::string>>(j, "bindSources");
    usage.workingDirectory = optionalValue<std::string>(j, "workingDirectory");
}

}  // namespace corvel
