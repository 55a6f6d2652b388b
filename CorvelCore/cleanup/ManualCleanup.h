// The commands a person could run to free a simulation's eligible items themselves. Velmora shows
// them for review and never runs them: deciding to delete stays with the person.
//
//   ManualCleanup::removalCommand(simulation);   // "rm -r -- '/home/me/.cache/pip' '/home/me/x'"
//   ManualCleanup::shellQuoted("it's");           // "'it'\''s'"
#pragma once

#include "cleanup/CleanupSimulation.h"

#include <optional>
#include <string>
#include <string_view>

namespace corvel::ManualCleanup {

// `text` as one word for a POSIX shell, whatever it holds.
std::string shellQuoted(std::string_view text);

// One command removing every eligible item; absent when nothing is eligible. Without "-f", so
// the shell still asks before removing anything write-protected.
std::optional<std::string> removalCommand(const CleanupSimulation& simulation);

}  // namespace corvel::ManualCleanup
