// The applications a Linux desktop knows: the ".desktop" files in the applications folder of each
// XDG data folder ($XDG_DATA_HOME, else ~/.local/share; then $XDG_DATA_DIRS, else
// /usr/local/share:/usr/share). The person's own entries come first and hide system entries of
// the same id. Only the folders themselves are read, not their subfolders, which few
// applications use; unreadable files are passed over.
//
//   auto entries = DesktopApplications::read(machine.environment(), machine.home());
#pragma once

#include "common/Environment.h"
#include "processes/DesktopEntry.h"

#include <string>
#include <vector>

namespace corvel::DesktopApplications {

// The applications folders in the order they are searched.
std::vector<std::string> folders(const Environment& environment, const std::string& home);

std::vector<DesktopEntry> read(const Environment& environment, const std::string& home);

}  // namespace corvel::DesktopApplications
