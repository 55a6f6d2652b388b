// The well-known folders where developer tools pile up data, with a one-line note on how each
// tool clears its own. The built-in lists are fixed; `custom` is the category of locations a
// person adds.
//
//   for (const auto& location : FootprintLocation::defaults(home, hostPlatform())) { ... }
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "common/Json.h"
#include "common/Platform.h"
#include "space/FootprintCategory.h"

namespace corvel {

struct FootprintLocation {
    std::string name;
    FootprintCategory category = FootprintCategory::custom;
    std::string path;  // absolute
    std::string note;

    bool operator==(const FootprintLocation&) const = default;

    // The locations in a macOS home folder, in display order.
    static std::vector<FootprintLocation> defaults(const std::filesystem::path& home);
    // Where the same tools keep the same data in a Linux home folder (XDG cache, dot folders).
    static std::vector<FootprintLocation> linuxDefaults(const std::filesystem::path& home);
    // The list for the given platform.
    static std::vector<FootprintLocation> defaults(const std::filesystem::path& home, Platform platform);
};

CORVEL_JSON_RECORD(FootprintLocation, name, category, path, note)

}  // namespace corvel
