#include "space/FootprintLocation.h"

#include <string_view>

namespace corvel {

namespace {

struct Template {
    std::string_view name;
    FootprintCategory category;
    std::string_view relativePath;
    std::string_view note;
};

using enum FootprintCategory;

constexpr Template macLocations[] = {
    {"Xcode DerivedData", xcode, "Library/Developer/Xcode/DerivedData",
     "Build intermediates. Safe to clear; Xcode rebuilds them."},
    {"Xcode Archives", xcode, "Library/Developer/Xcode/Archives",
     "App archives and dSYMs. Keep the ones you may need for crash symbolication."},
    {"iOS Device Support", xcode, "Library/Developer/Xcode/iOS DeviceSupport",
     "Debug symbols per iOS version. Old versions can go."},
    {"Xcode Caches", xcode, "Library/Caches/com.apple.dt.Xcode", "Regenerated automatically."},
    {"Simulator Devices", simulators, "Library/Developer/CoreSimulator/Devices",
     "Simulator data. Remove unavailable devices with `xcrun simctl delete unavailable`."},
    {"Simulator Caches", simulators, "Library/Developer/CoreSimulator/Caches", "Dyld and runtime caches."},
    {"SwiftPM Cache", packageManagers, "Library/Caches/org.swift.swiftpm", "Cached package checkouts."},
    {"CocoaPods Cache", packageManagers, "Library/Caches/CocoaPods", "Pod downloads."},
    {"Homebrew Cache", packageManagers, "Library/Caches/Homebrew", "Downloaded bottles. `brew cleanup` trims it."},
    {"npm Cache", packageManagers, ".npm", "`npm cache clean --force` clears it."},
    {"Yarn Cache", packageManagers, "Library/Caches/Yarn", "Yarn classic package cache."},
    {"pnpm Store", packageManagers, "Library/pnpm/store", "`pnpm store prune` removes unreferenced packages."},
    {"pip Cache", packageManagers, "Library/Caches/pip", "`pip cache purge` clears it."},
    {"Gradle Caches", packageManagers, ".gradle/caches", "Dependency and build caches."},
    {"Maven Repository", packageManagers, ".m2/repository", "Downloaded artifacts."},
    {"Cargo Registry", packageManagers, ".cargo/registry", "Crate sources and index."},
    {"Go Module Cache", packageManagers, "go/pkg/mod", "`go clean -modcache` clears it."},
    {"Rust Toolchains", toolchains, ".rustup/toolchains", "Installed Rust toolchains."},
    {"Node Versions (nvm)", toolchains, ".nvm/versions", "Node.js versions installed via nvm."},
    {"Android SDK", toolchains, "Library/Android/sdk", "SDK platforms, system images, and emulators."},
};

// The same tools on Linux keep their caches under ~/.cache (XDG) or their own dot folders;
// Xcode and the simulators have no Linux counterpart.
constexpr Template linuxLocations[] = {
    {"SwiftPM Cache", packageManagers, ".cache/org.swift.swiftpm", "Cached package checkouts."},
    {"Homebrew Cache", packageManagers, ".cache/Homebrew", "Downloaded bottles. `brew cleanup` trims it."},
    {"npm Cache", packageManagers, ".npm", "`npm cache clean --force` clears it."},
    {"Yarn Cache", packageManagers, ".cache/yarn", "Yarn classic package cache."},
    {"pnpm Store", packageManagers, ".local/share/pnpm/store", "`pnpm store prune` removes unreferenced packages."},
    {"pip Cache", packageManagers, ".cache/pip", "`pip cache purge` clears it."},
    {"Gradle Caches", packageManagers, ".gradle/caches", "Dependency and build caches."},
    {"Maven Repository", packageManagers, ".m2/repository", "Downloaded artifacts."},
    {"Cargo Registry", packageManagers, ".cargo/registry", "Crate sources and index."},
    {"Go Module Cache", packageManagers, "go/pkg/mod", "`go clean -modcache` clears it."},
    {"Go Build Cache", packageManagers, ".cache/go-build", "`go clean -cache` clears it."},
    {"Rust Toolchains", toolchains, ".rustup/toolchains", "Installed Rust toolchains."},
    {"Node Versions (nvm)", toolchains, ".nvm/versions", "Node.js versions installed via nvm."},
    {"Android SDK", toolchains, "Android/Sdk", "SDK platforms, system images, and emulators."},
};

template <std::size_t N>
std::vector<FootprintLocation> resolve(const Template (&templates)[N], const std::filesystem::path& home) {
    std::vector<FootprintLocation> locations;
    locations.reserve(N);
    for (const Template& item : templates) {
        locations.push_back(
            {std::string(item.name), item.category, (home / item.relativePath).string(), std::string(item.note)});
    }
    return locations;
}

}  // namespace

std::vector<FootprintLocation> FootprintLocation::defaults(const std::filesystem::path& home) {
    return resolve(macLocations, home);
}

std::vector<FootprintLocation> FootprintLocation::linuxDefaults(const std::filesystem::path& home) {
    return resolve(linuxLocations, home);
}

std::vector<FootprintLocation> FootprintLocation::defaults(const std::filesystem::path& home, Platform platform) {
    return platform == Platform::linux ? linuxDefaults(home) : defaults(home);
}

}  // namespace corvel
