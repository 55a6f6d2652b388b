// This process, as the disk-operation preflight sees it: its pid, to tell its own open files from
// other processes', and the program file it runs from, to tell whether unmounting a volume would
// pull the ground from under it.
//
//   bool ours = usage.pid == currentProcessID();
//   std::string bundle = currentExecutablePath().value_or("");
#pragma once

#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

inline std::int32_t currentProcessID() {
    return static_cast<std::int32_t>(::getpid());
}

// The absolute path of the running program file; absent when the system will not say.
// One definition per platform under platform/<os>/.
std::optional<std::string> currentExecutablePath();

}  // namespace corvel
