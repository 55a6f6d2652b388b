// What a process's memory figure measures. Each system offers a different honest figure: macOS
// the physical footprint its own activity monitor shows; Linux the proportional set size (shared
// pages split between their users) where the process lets us read it, else the resident set,
// which counts shared libraries in full for every process and so overstates a group's total.
//
//   label(MemoryKind::proportional) == "PSS"
#pragma once

#include "common/EnumTable.h"

namespace corvel {

enum class MemoryKind { footprint, proportional, resident };

template <>
struct EnumTable<MemoryKind> {
    static constexpr std::array<EnumEntry<MemoryKind>, 3> entries{{
        {MemoryKind::footprint, "footprint", "footprint"},
        {MemoryKind::proportional, "pss", "PSS"},
        {MemoryKind::resident, "rss", "RSS"},
    }};
};
CORVEL_ENUM_JSON(MemoryKind)

// One sentence for people on what the figure counts.
std::string_view meaning(MemoryKind kind);

// The less exact of two kinds: a total that mixes PSS and RSS figures is only as good as RSS.
inline MemoryKind coarser(MemoryKind a, MemoryKind b) {
    return static_cast<int>(a) >= static_cast<int>(b) ? a : b;
}

}  // namespace corvel
