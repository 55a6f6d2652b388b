#include "common/DataFolder.h"

namespace corvel {

std::filesystem::path defaultDataFolder(Platform platform, const std::string& home,
                                        const std::optional<std::string>& xdgDataHome) {
    const std::filesystem::path homePath(home);
    if (platform == Platform::macos) return homePath / "Library" / "Application Support" / "Velmora";
    // The XDG rules say a relative value is invalid and must be ignored.
    if (xdgDataHome && !xdgDataHome->empty() && xdgDataHome->front() == '/')
        return std::filesystem::path(*xdgDataHome) / "velmora";
    return homePath / ".local" / "share" / "velmora";
}

}  // namespace corvel
