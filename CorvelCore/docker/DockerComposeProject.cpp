#include "docker/DockerComposeProject.h"

namespace corvel {

void to_json(Json& j, const DockerComposeProject& project) {
    j = Json{{"name", project.name}, {"status", project.status}, {"configFiles", project.configFiles}};
}

void from_json(const Json& j, DockerComposeProject& project) {
    project.name = required<std::string>(j, "name");
    project.status = required<std::string>(j, "status");
    project.configFiles = required<std::vector<std::string>>(j, "configFiles");
}

}  // namespace corvel
