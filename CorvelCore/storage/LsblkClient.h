// Runs `lsblk` for the Linux discovery, fenced by its own read-only policy.
#pragma once

#include <string>

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"

namespace corvel {

struct LsblkClient {
    static constexpr const char* executable = "/usr/bin/lsblk";
    // Only the one listing the discovery reads: JSON, byte sizes, every column.
    static const CommandPolicy& policy();

    CommandRunning& runner;

    std::string listAll() const;  // lsblk -J -b -O
};

}  // namespace corvel
