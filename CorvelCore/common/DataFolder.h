// Where Velmora keeps its files when nobody said otherwise: the platform's support folder.
//
//   auto folder = defaultDataFolder(Platform::linux, "/home/me", std::nullopt);  // ~/.local/share/velmora
#pragma once

#include "common/Platform.h"

#include <filesystem>
#include <optional>
#include <string>

namespace corvel {

// ~/Library/Application Support/Velmora on macOS; $XDG_DATA_HOME/velmora (when set and absolute)
// or ~/.local/share/velmora on Linux.
std::filesystem::path defaultDataFolder(Platform platform, const std::string& home,
                                        const std::optional<std::string>& xdgDataHome);

}  // namespace corvel
