// The three things a person may do to a running app or process, each asked for and confirmed one
// at a time. Quit asks politely, force quit does not ask, relaunch quits and starts the app again.
//
//   label(ProcessAction::forceQuit) == "Force Quit";  enumFromRaw<ProcessAction>("relaunch")
#pragma once

#include "common/EnumTable.h"

namespace corvel {

enum class ProcessAction { quit, forceQuit, relaunch };

template <>
struct EnumTable<ProcessAction> {
    static constexpr std::array<EnumEntry<ProcessAction>, 3> entries{{
        {ProcessAction::quit, "quit", "Quit"},
        {ProcessAction::forceQuit, "forceQuit", "Force Quit"},
        {ProcessAction::relaunch, "relaunch", "Relaunch"},
    }};
};
CORVEL_ENUM_JSON(ProcessAction)

// The action's title as the screens and the command line show it ("Force Quit").
inline std::string_view title(ProcessAction action) {
    return label(action);
}

}  // namespace corvel
