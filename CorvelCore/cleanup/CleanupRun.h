// From selected paths (or one folder to look through) to a CleanupSimulation, with everything the
// planner needs gathered around it: the measurement of each path, the volume holding the
// selection and its free space, the files open below it, the running applications and the
// credential-like files inside. Front ends hand over the sources and print what comes back;
// nothing here deletes, moves or writes a file.
//
//   CleanupSources sources{catalog, [&] { return machine.snapshot().volumes; }, openFiles, running, now};
//   ScanProgress progress;
//   CleanupRunResult run = CleanupRun::simulatePaths({"/home/me/.cache"}, sources, progress, isCancelled);
//   run.simulation;   // eligible and excluded items, checks, free space before
//   run.problems;     // paths that could not take part, with their reasons
//
//   CleanupRunResult proposed = CleanupRun::suggest("/home/me", {}, sources, progress, isCancelled);
//   proposed.suggestions;   // what was chosen and why; proposed.simulation covers them
#pragma once

#include "cleanup/CleanupMeasurement.h"
#include "cleanup/CleanupSimulation.h"
#include "cleanup/CleanupSuggester.h"
#include "cleanup/RunningApplications.h"
#include "processes/OpenFileListing.h"
#include "space/ScanProgress.h"
#include "space/SpaceCatalog.h"
#include "storage/StorageVolume.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

struct CleanupSources {
    SpaceCatalog catalog;
    // The machine's volumes. Discovery can take a while, so it is asked while the walk runs.
    std::function<std::vector<StorageVolume>()> volumes;
    std::shared_ptr<OpenFileListing> openFiles;
    std::shared_ptr<RunningApplications> runningApplications;
    TimePoint now{};
};

struct CleanupRunResult {
    CleanupSimulation simulation;
    std::vector<CleanupSuggestion> suggestions;  // only when suggesting
    std::vector<CleanupPathProblem> problems;    // selected paths left out of the simulation
    std::vector<CleanupPathProblem> warnings;    // paths simulated with figures that are a lower bound
    bool wasCancelled = false;                   // then nothing was simulated
};

// Nothing could be simulated: no selected path could be measured, or the folder to look through
// cannot be read. The text names every path with its reason, on one line.
class CleanupRunError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace CleanupRun {

// Measures and simulates `paths`. Paths that cannot be measured, and paths on another volume
// than the first measurable one, become problems. Throws CleanupRunError when none is left.
CleanupRunResult simulatePaths(const std::vector<std::string>& paths, const CleanupSources& sources,
                               ScanProgress& progress, const std::function<bool()>& isCancelled);

// Scans `root` once, picks what CleanupSuggester proposes and simulates that selection. Throws
// CleanupRunError when `root` cannot be scanned.
CleanupRunResult suggest(const std::string& root, const CleanupSuggestionOptions& options,
                         const CleanupSources& sources, ScanProgress& progress,
                         const std::function<bool()>& isCancelled);

// The volume whose mount point is the deepest one holding `path`.
std::optional<StorageVolume> volumeHolding(const std::string& path, const std::vector<StorageVolume>& volumes);

}  // namespace CleanupRun
}  // namespace corvel
