// The space catalogue for the machine a command looks at: the recording's home folder and
// platform in replay, this machine's otherwise. Every space command classifies with it, so that
// `classify` and a scan never disagree about the same path.
//
//   const SpaceCatalog catalog = spaceCatalogFor(context, projectRoots);
#pragma once

#include "CliContext.h"
#include "space/SpaceCatalog.h"

#include <string>
#include <vector>

namespace corvel::cli {

SpaceCatalog spaceCatalogFor(CliContext& context, std::vector<std::string> projectRoots = {});

// An absolute, lexically normal form of a path typed by a person, without a trailing "/", so
// that "./src/", "src" and "/home/me/src" name the same folder. The file system is not asked.
std::string absolutePathText(const std::string& typed);

}  // namespace corvel::cli
