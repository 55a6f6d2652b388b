// Where Velmora keeps its files when nobody said otherwise: the platform's support folder.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace corvel {

enum class HostPlatform { macos, linux };

// The platform this binary was built for.
HostPlatform hostPlatform();

// ~/Library/Application Support/Velmora on macOS; $XDG_DATA_HOME/velmora (when set and absolute)
// or ~/.local/share/velmora on Linux.
std::filesystem::path defaultDataFolder(HostPlatform platform, const std::string& home,
                                        const std::optional<std::string>& xdgDataHome);

}  // namespace corvel
