// The disk tool, read-only: list, info and the APFS list, each as a property list.
#pragma once

#include "command/CommandPolicy.h"

#include <string>

namespace corvel {

class DiskutilClient {
public:
    static constexpr const char* executable = "/usr/sbin/diskutil";
    static const CommandPolicy& policy();

    explicit DiskutilClient(CommandRunning& runner) : runner_(runner) {}

    std::string listPhysical() const;
    std::string info(const std::string& identifier) const;
    std::string apfsList() const;

    CommandRunning& runner() const { return runner_; }

private:
    CommandRunning& runner_;
};

}  // namespace corvel
