// One slice of a physical disk's partition map.
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct Partition {
    std::string id;        // whole-disk identifier plus a slice suffix ("disk0s2", "nvme0n1p2")
    std::string content;   // content type as the tool names it ("Apple_APFS", "EFI", "ext4")
    std::int64_t sizeBytes = 0;
    std::optional<std::string> volumeName;
    std::optional<std::string> uuid;

    bool operator==(const Partition&) const = default;
};

inline void to_json(Json& j, const Partition& p) {
    j = Json{{"id", p.id}, {"content", p.content}, {"sizeBytes", p.sizeBytes}};
    putOptional(j, "volumeName", p.volumeName);
    putOptional(j, "uuid", p.uuid);
}

inline void from_json(const Json& j, Partition& p) {
    p.id = required<std::string>(j, "id");
    p.content = required<std::string>(j, "content");
    p.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    p.volumeName = optionalValue<std::string>(j, "volumeName");
    p.uuid = optionalValue<std::string>(j, "uuid");
}

}  // namespace corvel
