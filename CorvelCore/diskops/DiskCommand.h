// One program run that a disk operation consists of: the arguments and the policy they must pass.
#pragma once

#include "command/CommandPolicy.h"

#include <string>
#include <vector>

namespace corvel {

struct DiskCommand {
    const CommandPolicy* policy = nullptr;
    std::vector<std::string> arguments;

    bool operator==(const DiskCommand& other) const {
        return *policy == *other.policy && arguments == other.arguments;
    }
};

}  // namespace corvel
