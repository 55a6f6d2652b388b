#include "agent/ExecutablePath.h"

#include "common/AtomicFile.h"

#include <filesystem>

namespace corvel {

std::string currentExecutablePath() {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw FileError("Could not find the running program: " + error.message());
    return path.string();
}

}  // namespace corvel
