#include "docker/DockerBindMount.h"

namespace corvel {

void to_json(Json& j, const DockerBindMount& bind) {
    j = Json{{"container", bind.container}, {"mount", bind.mount}};
}

void from_json(const Json& j, DockerBindMount& bind) {
    bind.container = required<DockerContainer>(j, "container");
    bind.mount = required<DockerMount>(j, "mount");
}

}  // namespace corvel
