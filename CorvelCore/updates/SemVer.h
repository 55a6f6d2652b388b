// Version texts compared as numbers, so that a release can tell whether it is newer than the
// running copy: "1.10" is newer than "1.9", "1.2" equals "1.2.0", and "v3.4.5-rc1" reads 3, 4, 5.
//
//   SemVer::parts(" V3.4.5-rc1 ") == std::vector<std::int64_t>{3, 4, 5}
//   SemVer::compare("1.9", "1.10") == VersionOrder::ascending     // the first is older
#pragma once

#include "common/EnumTable.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace corvel {

enum class VersionOrder { ascending, same, descending };

template <>
struct EnumTable<VersionOrder> {
    static constexpr std::array<EnumEntry<VersionOrder>, 3> entries{{
        {VersionOrder::ascending, "ascending", "older"},
        {VersionOrder::same, "same", "the same"},
        {VersionOrder::descending, "descending", "newer"},
    }};
};
CORVEL_ENUM_JSON(VersionOrder)

namespace SemVer {

// Trimmed, one leading "v" or "V" dropped, everything from the first "-" ignored, split at "."
// (empty pieces dropped); a piece that is not all decimal digits counts as 0, and one too large
// for 64 bits counts as the largest value. An empty text gives no parts.
std::vector<std::int64_t> parts(std::string_view text);

// Position by position, a missing part counting as 0: ascending when `a` is older than `b`,
// descending when newer.
VersionOrder compare(std::string_view a, std::string_view b);

}  // namespace SemVer
}  // namespace corvel
