// The one seam through which the core runs external tools. The live implementation starts a
// process; the recorded one replays captured output, which is how every parser and discovery
// path is exercised without the platform.
#pragma once

#include <string>
#include <vector>

namespace corvel {

class CommandRunning {
public:
    virtual ~CommandRunning() = default;
    // Standard output of a successful run (raw bytes). Throws CommandError.
    virtual std::string run(const std::string& executable, const std::vector<std::string>& arguments) = 0;
};

}  // namespace corvel
