// What a person can allow Velmora to do, one scope at a time. The raw value is the scope's id, its
// JSON form and the word typed on the command line; the label is its title.
//
//   for (ConsentScope scope : allCases<ConsentScope>())
//       show(rawValue(scope), title(scope), explanation(scope), isRequired(scope));
//   enumFromRaw<ConsentScope>("benchmark") == ConsentScope::benchmark
#pragma once

#include "common/EnumTable.h"

#include <string_view>

namespace corvel {

enum class ConsentScope { readStorage, diskOperations, benchmark, backgroundAgent, processControl };

template <>
struct EnumTable<ConsentScope> {
    static constexpr std::array<EnumEntry<ConsentScope>, 5> entries{{
        {ConsentScope::readStorage, "readStorage", "Read storage information"},
        {ConsentScope::diskOperations, "diskOperations", "Mount, unmount, eject, verify and create folders"},
        {ConsentScope::benchmark, "benchmark", "Write temporary benchmark files"},
        {ConsentScope::backgroundAgent, "backgroundAgent", "Background monitoring at login"},
        {ConsentScope::processControl, "processControl", "Quit, force-quit or relaunch apps and processes"},
    }};
};
CORVEL_ENUM_JSON(ConsentScope)

std::string_view title(ConsentScope scope);
// The sentences shown under the title: what the scope lets Velmora do and what it costs.
std::string_view explanation(ConsentScope scope);
// Only reading storage is required; without it Velmora has nothing to show.
bool isRequired(ConsentScope scope);

}  // namespace corvel
