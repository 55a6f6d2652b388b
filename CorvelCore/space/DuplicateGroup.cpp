#include "space/DuplicateGroup.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t DuplicateGroup::reclaimableBytes() const {
    if (paths.size() < 2) return 0;
    return checkedMultiply(allocatedBytes, static_cast<std::int64_t>(paths.size() - 1));
}

void to_json(Json& j, const DuplicateGroup& group) {
    j = Json{{"logicalBytes", group.logicalBytes},
             {"allocatedBytes", group.allocatedBytes},
             {"contentHash", group.contentHash},
             {"paths", group.paths}};
}

void from_json(const Json& j, DuplicateGroup& group) {
    group.logicalBytes = required<std::int64_t>(j, "logicalBytes");
    group.allocatedBytes = required<std::int64_t>(j, "allocatedBytes");
    group.contentHash = required<std::string>(j, "contentHash");
    group.paths = required<std::vector<std::string>>(j, "paths");
}

}  // namespace corvel
