// The groups of the developer footprint. The raw value is both the display name and the
// persisted form.
#pragma once

#include <array>

#include "common/EnumTable.h"
#include "common/Json.h"

namespace corvel {

enum class FootprintCategory { xcode, simulators, packageManagers, toolchains, custom };

template <>
struct EnumTable<FootprintCategory> {
    static constexpr std::array<EnumEntry<FootprintCategory>, 5> entries{{
        {FootprintCategory::xcode, "Xcode", "Xcode"},
        {FootprintCategory::simulators, "Simulators", "Simulators"},
        {FootprintCategory::packageManagers, "Package Managers", "Package Managers"},
        {FootprintCategory::toolchains, "Toolchains & SDKs", "Toolchains & SDKs"},
        {FootprintCategory::custom, "Custom", "Custom"},
    }};
};

CORVEL_ENUM_JSON(FootprintCategory)

}  // namespace corvel
