#include "storage/BoundedMountTable.h"

#include "common/CallWithin.h"

namespace corvel {

StatvfsFigures BoundedMountTable::statvfs(const std::string& mountPoint) {
    return callWithin(limit_, [inner = inner_, mountPoint] { return inner->statvfs(mountPoint); });
}

}  // namespace corvel
