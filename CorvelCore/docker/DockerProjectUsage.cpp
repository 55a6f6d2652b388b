#include "docker/DockerProjectUsage.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t DockerProjectUsage::totalBytes() const {
    return checkedAdd(checkedAdd(containerBytes, volumeBytes), imageBytes);
}

}  // namespace corvel
