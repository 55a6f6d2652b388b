#include "docker/DockerDiskUsageLine.h"

namespace corvel {

void to_json(Json& j, const DockerDiskUsageLine& line) {
    j = Json{{"type", line.type},
             {"total", line.total},
             {"active", line.active},
             {"sizeBytes", line.sizeBytes},
             {"reclaimableBytes", line.reclaimableBytes}};
}

void from_json(const Json& j, DockerDiskUsageLine& line) {
    line.type = required<std::string>(j, "type");
    line.total = required<std::int64_t>(j, "total");
    line.active = required<std::int64_t>(j, "active");
    line.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    line.reclaimableBytes = required<std::int64_t>(j, "reclaimableBytes");
}

}  // namespace corvel
