// Finds the projects under a person's project roots. Each root is measured once by the space
// scanner; the projects are then picked out of that scan's tree, so every size is the scanner's
// clone- and hard-link-aware figure and the walk happens once. A folder is a project when it holds
// a git repository (or is a linked worktree of one) or a package manifest. The search goes a few
// levels deep and never into hidden folders, dependency folders or build outputs, where every
// installed package carries a manifest of its own.
//
//   ScanProgress progress;
//   auto roots = ProjectDiscovery::defaultRoots(settings.projectRoots, home, isFolder);
//   ProjectListing listing = ProjectDiscovery::discover(roots, catalog, {}, progress, isCancelled);
#pragma once

#include "migration/Project.h"
#include "space/ScanProgress.h"
#include "space/SpaceCatalog.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct ProjectDiscoveryOptions {
    int maxDepth = 5;                 // folder levels below a root searched for projects
    std::size_t partsPerProject = 8;  // rebuildable folders kept by name per project
    unsigned threads = 0;             // scanner threads; 0 picks its default
};

namespace ProjectDiscovery {

// The folders in the home folder where people commonly keep their projects.
const std::vector<std::string>& commonRootNames();

// The manifest kinds that a folder's entry names mark, in table order (git is told apart by the
// type of ".git", so it is not decided here).
std::vector<ProjectKind> kindsFromNames(const std::vector<std::string>& names);

// What a manifest marks inside an enclosing project: CMake, Gradle and Maven build a whole tree
// from its top, so their files in subfolders are parts of that build, not projects of their own.
std::vector<ProjectKind> nestedKinds(const std::vector<ProjectKind>& kinds, const std::vector<ProjectKind>& enclosing);

// Whether the search for projects goes into a folder with this name and catalogue verdict.
bool looksInside(std::string_view name, const SpaceVerdict& verdict);

// Whether the catalogue's verdict names something a project's tools recreate.
bool isRebuildable(const SpaceVerdict& verdict);

// The main repository of a linked worktree, from its ".git" file ("gitdir: REPO/.git/worktrees/NAME";
// a relative gitdir is taken from `folder`). Absent when the text is not such a link.
std::optional<std::string> repositoryOfGitFile(std::string_view text, const std::string& folder);

// The worktree folder a repository records in ".git/worktrees/NAME/gitdir" ("WORKTREE/.git").
std::optional<std::string> worktreeOfGitdirFile(std::string_view text);

// The roots searched when none is given: the settings' project roots, then the common folders of
// the home folder, each only when `isFolder` says it exists, without repeats or roots that lie
// inside another root (they would be measured twice).
std::vector<std::string> defaultRoots(const std::vector<std::string>& settingRoots, const std::string& home,
                                      const std::function<bool(const std::string&)>& isFolder);

// The same clean-up for roots a person typed: repeats and roots inside another root dropped.
std::vector<std::string> independentRoots(const std::vector<std::string>& roots);

// One root: measured, then searched. A root that cannot be scanned is a workspace with a problem.
Workspace discoverIn(const std::string& root, const SpaceCatalog& catalog, const ProjectDiscoveryOptions& options,
                     ScanProgress& progress, const std::function<bool()>& isCancelled);

ProjectListing discover(const std::vector<std::string>& roots, const SpaceCatalog& catalog,
                        const ProjectDiscoveryOptions& options, ScanProgress& progress,
                        const std::function<bool()>& isCancelled);

}  // namespace ProjectDiscovery
}  // namespace corvel
