#include "space/DuplicateGroup.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t DuplicateGroup::reclaimableBytes() const {
    if (paths.size() < 2) return 0;
    return checkedMultiply(allocatedBytes, static_cast<std::int64_t>(paths.size() - 1));
}

}  // namespace corvel
