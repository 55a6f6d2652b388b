// The absolute path of the running program, which is what a login item or service must start.
//
//   std::string program = currentExecutablePath();   // "/usr/local/bin/velmora"
#pragma once

#include <string>

namespace corvel {

// Throws FileError when the system does not say.
std::string currentExecutablePath();

}  // namespace corvel
