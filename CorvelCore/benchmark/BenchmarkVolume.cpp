#include "benchmark/BenchmarkVolume.h"

#include "common/PathText.h"

namespace corvel::BenchmarkVolume {

std::optional<MountInfoEntry> mountHolding(const std::vector<MountInfoEntry>& mounts, const std::string& path,
                                           const std::string& majorMinor) {
    const auto best = [&](bool sameDeviceOnly) -> std::optional<MountInfoEntry> {
        std::optional<MountInfoEntry> found;
        for (const auto& mount : mounts) {
            if (sameDeviceOnly && mount.majorMinor != majorMinor) continue;
            if (!isWithin(path, mount.mountPoint)) continue;
            if (!found || mount.mountPoint.size() >= found->mountPoint.size()) found = mount;
        }
        return found;
    };
    if (auto mount = best(true)) return mount;
    return best(false);
}

}  // namespace corvel::BenchmarkVolume
