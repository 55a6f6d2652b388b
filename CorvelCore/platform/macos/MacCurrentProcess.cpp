#include "processes/CurrentProcess.h"

#include <mach-o/dyld.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace corvel {

std::optional<std::string> currentExecutablePath() {
    std::uint32_t size = 0;
    ::_NSGetExecutablePath(nullptr, &size);  // reports the size it needs
    std::vector<char> path(size + 1, '\0');
    if (::_NSGetExecutablePath(path.data(), &size) != 0) return std::nullopt;
    // The answer may run through symbolic links; the volume test needs where the file really is.
    char resolved[PATH_MAX];
    if (!::realpath(path.data(), resolved)) return std::string(path.data());
    return std::string(resolved);
}

}  // namespace corvel
