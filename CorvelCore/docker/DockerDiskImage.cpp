#include "docker/DockerDiskImage.h"

namespace corvel {

void to_json(Json& j, const DockerDiskImage& image) {
    j = Json{{"path", image.path}, {"apparentBytes", image.apparentBytes}, {"allocatedBytes", image.allocatedBytes}};
    putOptional(j, "volumeMountPoint", image.volumeMountPoint);
    j["source"] = image.source;
}

void from_json(const Json& j, DockerDiskImage& image) {
    image.path = required<std::string>(j, "path");
    image.apparentBytes = required<std::int64_t>(j, "apparentBytes");
    image.allocatedBytes = required<std::int64_t>(j, "allocatedBytes");
    image.volumeMountPoint = optionalValue<std::string>(j, "volumeMountPoint");
    image.source = required<std::string>(j, "source");
}

}  // namespace corvel
