// The two questions the Linux discovery asks the kernel about mounts: the mount table text and
// the capacity of one mount. Live answers come from platform/linux, recorded ones from a
// machine recording, test answers from a fake.
#pragma once

#include <string>

#include "storage/StatvfsFigures.h"

namespace corvel {

class MountTableReading {
public:
    virtual ~MountTableReading() = default;
    // The text of /proc/self/mountinfo; throws std::runtime_error when it cannot be read.
    virtual std::string mountInfo() = 0;
    // Capacity of the file system mounted at `mountPoint`; throws std::runtime_error naming it.
    virtual StatvfsFigures statvfs(const std::string& mountPoint) = 0;
};

}  // namespace corvel
