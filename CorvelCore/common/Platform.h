// The two kinds of machine Velmora reads, live or recorded. One enumeration for everything that
// differs by platform: discovery, the catalogue's rules, the data folder, Docker's locations.
//
//   if (machine.platform() == Platform::linux) { ... }
//   rawValue(Platform::macos) == "macos"   // the spelling of recordings and JSON
#pragma once

#include "common/EnumTable.h"

namespace corvel {

enum class Platform { macos, linux };

template <>
struct EnumTable<Platform> {
    static constexpr std::array<EnumEntry<Platform>, 2> entries{{
        {Platform::macos, "macos", "macOS"},
        {Platform::linux, "linux", "Linux"},
    }};
};
CORVEL_ENUM_JSON(Platform)

// The platform this binary was built for (one definition per platform under platform/<os>/).
Platform hostPlatform();

}  // namespace corvel
