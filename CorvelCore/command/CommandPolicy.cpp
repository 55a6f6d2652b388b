#include "command/CommandPolicy.h"

#include "command/CommandError.h"

#include <algorithm>

namespace corvel {

bool CommandPolicy::permits(const std::vector<std::string>& arguments) const {
    return std::any_of(allowedPrefixes.begin(), allowedPrefixes.end(), [&](const auto& prefix) {
        return !prefix.empty() && prefix.size() <= arguments.size() &&
               std::equal(prefix.begin(), prefix.end(), arguments.begin());
    });
}

std::string CommandPolicy::run(const std::vector<std::string>& arguments, CommandRunning& runner) const {
    if (!permits(arguments)) throw CommandError::notAllowed(arguments.empty() ? std::string() : arguments.front());
    return runner.run(executable, arguments);
}

}  // namespace corvel
