#include "common/DataFolder.h"

namespace corvel {

HostPlatform hostPlatform() {
#if defined(__APPLE__)
    return HostPlatform::macos;
#else
    return HostPlatform::linux;
#endif
}

std::filesystem::path defaultDataFolder(HostPlatform platform, const std::string& home,
                                        const std::optional<std::string>& xdgDataHome) {
    const std::filesystem::path homePath(home);
    if (platform == HostPlatform::macos) return homePath / "Library" / "Application Support" / "Velmora";
    // The XDG rules say a relative value is invalid and must be ignored.
    if (xdgDataHome && !xdgDataHome->empty() && xdgDataHome->front() == '/')
        return std::filesystem::path(*xdgDataHome) / "velmora";
    return homePath / ".local" / "share" / "velmora";
}

}  // namespace corvel
