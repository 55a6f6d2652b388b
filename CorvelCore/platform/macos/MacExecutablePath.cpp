#include "agent/ExecutablePath.h"

#include "common/AtomicFile.h"

#include <mach-o/dyld.h>

#include <climits>
#include <cstdlib>
#include <cstdint>
#include <vector>

namespace corvel {

std::string currentExecutablePath() {
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::vector<char> buffer(size + 1, '\0');
    if (_NSGetExecutablePath(buffer.data(), &size) != 0) throw FileError("Could not find the running program");
    char resolved[PATH_MAX];
    if (!::realpath(buffer.data(), resolved)) throw FileError("Could not find the running program");
    return resolved;
}

}  // namespace corvel
