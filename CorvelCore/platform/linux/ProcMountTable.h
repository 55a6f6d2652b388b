// The live mount table of a Linux machine: /proc/self/mountinfo and statvfs(3).
#pragma once

#include "storage/MountTableReading.h"

namespace corvel {

class ProcMountTable : public MountTableReading {
public:
    std::string mountInfo() override;
    StatvfsFigures statvfs(const std::string& mountPoint) override;
};

}  // namespace corvel
