// The last step of an update, after a verified download. On macOS the system installer runs
// through osascript, which asks for an administrator's approval; on Linux, where installing a
// package is the package manager's business, Velmora only prints the command for the person.
//
//   if (UpdateInstaller::stepFor(platform) == UpdateInstaller::Step::runInstaller)
//       UpdateInstaller::install(package, machine.runner(ToolTimeout::action));   // throws UpdateError
//   else
//       show(UpdateInstaller::manualCommand(package));
#pragma once

#include "command/CommandPolicy.h"
#include "common/EnumTable.h"
#include "common/Platform.h"

#include <filesystem>
#include <string>

namespace corvel::UpdateInstaller {

enum class Step { runInstaller, printCommand };

inline constexpr const char* osascript = "/usr/bin/osascript";
inline constexpr const char* prompt = "Velmora wants to install its update.";

Step stepFor(Platform platform);

// The AppleScript that runs /usr/sbin/installer on `package` with administrator privileges.
std::string installerScript(const std::filesystem::path& package);

// osascript may run exactly that one script and nothing else.
CommandPolicy installerPolicy(const std::filesystem::path& package);

// Runs the installer (give it the 600-second runner). Throws UpdateError::failed with the tool's
// message, for example when the administrator declines.
void install(const std::filesystem::path& package, CommandRunning& runner);

// The shell command a person runs to install a Linux package: apt for a .deb, tar into
// /usr/local for a tarball; the path is quoted for the shell.
std::string manualCommand(const std::filesystem::path& package);

}  // namespace corvel::UpdateInstaller

namespace corvel {
template <>
struct EnumTable<UpdateInstaller::Step> {
    static constexpr std::array<EnumEntry<UpdateInstaller::Step>, 2> entries{{
        {UpdateInstaller::Step::runInstaller, "runInstaller", "Run the installer"},
        {UpdateInstaller::Step::printCommand, "printCommand", "Print the install command"},
    }};
};
}  // namespace corvel
