#include "processes/CurrentProcess.h"

#include <array>

namespace corvel {

std::optional<std::string> currentExecutablePath() {
    std::array<char, 4096> buffer{};
    const auto length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) return std::nullopt;
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

}  // namespace corvel
