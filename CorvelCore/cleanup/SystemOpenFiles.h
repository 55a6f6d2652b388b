// The open-file lister of the machine this program runs on, for the cleanup's "in use" rule:
// /proc on Linux, libproc on macOS (one definition per platform). A recorded machine records no
// open files, so front ends pass an empty listing when replaying.
//
//   auto lister = systemOpenFiles();
//   for (const auto& usage : lister->usages("/home/me/.cache")) inUse.push_back(usage.path);
//   EmptyOpenFiles none;   // nothing is open anywhere
#pragma once

#include "processes/OpenFileListing.h"

#include <memory>
#include <string>
#include <vector>

namespace corvel {

class EmptyOpenFiles final : public OpenFileListing {
public:
    std::vector<ProcessUsage> usages(const std::string&) override { return {}; }
};

std::unique_ptr<OpenFileListing> systemOpenFiles();

}  // namespace corvel
