// One whole disk as the disk tool's physical-disk list names it, with its partitions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Json.h"
#include "storage/Partition.h"

namespace corvel {

struct ListedDisk {
    std::string id;
    std::optional<std::string> content;
    std::int64_t sizeBytes = 0;
    std::vector<Partition> partitions;

    bool operator==(const ListedDisk&) const = default;
};

inline void to_json(Json& j, const ListedDisk& d) {
    j = Json::object();
    j["id"] = d.id;
    putOptional(j, "content", d.content);
    j["sizeBytes"] = d.sizeBytes;
    j["partitions"] = d.partitions;
}

inline void from_json(const Json& j, ListedDisk& d) {
    d.id = required<std::string>(j, "id");
    d.content = optionalValue<std::string>(j, "content");
    d.sizeBytes = required<std::int64_t>(j, "sizeBytes");
    d.partitions = required<std::vector<Partition>>(j, "partitions");
}

}  // namespace corvel
