// The open-file half of the process inspector: which running processes use files at or below a
// mount point or folder. One implementation reads the open-file lister's output (macOS, and
// recorded machines), one reads /proc directly (Linux); tests pass a fixed list.
//
//   std::vector<ProcessUsage> usages = lister.usages("/Volumes/Backup");
#pragma once

#include "processes/ProcessUsage.h"

#include <string>
#include <vector>

namespace corvel {

class OpenFileListing {
public:
    virtual ~OpenFileListing() = default;

    // Every use of a file at or below `path` by a running process, this process included. A
    // process that exits or denies access while being read is skipped; never throws for that.
    virtual std::vector<ProcessUsage> usages(const std::string& path) = 0;
};

}  // namespace corvel
