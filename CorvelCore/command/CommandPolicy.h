// The read-only promise: each client names the one program it may start and the argument-list
// prefixes it may use. Anything else is refused before a process exists.
//
//   CommandPolicy policy{"/usr/sbin/diskutil", {{"list"}, {"info"}, {"apfs", "list"}}};
//   auto bytes = policy.run({"info", "-plist", "disk0"}, runner);
#pragma once

#include "command/CommandRunning.h"

#include <string>
#include <vector>

namespace corvel {

struct CommandPolicy {
    std::string executable;
    std::vector<std::vector<std::string>> allowedPrefixes;

    // True when some non-empty prefix matches the start of `arguments` element by element.
    bool permits(const std::vector<std::string>& arguments) const;

    // Runs through `runner` when permitted; otherwise throws CommandError::notAllowed with the
    // first argument, without starting anything. Runner errors pass through unchanged.
    std::string run(const std::vector<std::string>& arguments, CommandRunning& runner) const;

    bool operator==(const CommandPolicy&) const = default;
};

}  // namespace corvel
