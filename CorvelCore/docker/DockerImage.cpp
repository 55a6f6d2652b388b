#include "docker/DockerImage.h"

namespace corvel {

std::string DockerImage::reference() const {
    return tag == "<none>" ? repository : repository + ":" + tag;
}

}  // namespace corvel
