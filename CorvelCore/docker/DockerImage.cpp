#include "docker/DockerImage.h"

namespace corvel {

std::string DockerImage::reference() const {
    return tag == "<none>" ? repository : repository + ":" + tag;
}

void to_json(Json& j, const DockerImage& image) {
    j = Json{{"id", image.id}, {"repository", image.repository}, {"tag", image.tag}, {"sizeBytes", image.sizeBytes}};
    putOptional(j, "sharedBytes", image.sharedBytes);
    putOptional(j, "uniqueBytes", image.uniqueBytes);
    j["containers"] = image.containers;
}

void from_json(const Json& j, DockerImage& image) {
    image.id = required<std::string>(j, "id");
    image.repository = required<std::string>(j, "repository");
    image.tag = required<std::string>(j, "tag");
    image.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    image.sharedBytes = optionalValue<std::int64_t>(j, "sharedBytes");
    image.uniqueBytes = optionalValue<std::int64_t>(j, "uniqueBytes");
    image.containers = required<std::int64_t>(j, "containers");
}

}  // namespace corvel
