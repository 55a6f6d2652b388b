// Measures the paths a person selected for a cleanup simulation: a folder with the space scanner
// (its volume only, every credential-like file inside listed), a file or link by its own size
// facts, each classified by the catalogue. A path that cannot be measured becomes a problem with
// its reason and the others go on.
//
//   ScanProgress progress;
//   MeasuredSelection measured = CleanupMeasurement::measure({"/home/me/.cache"}, catalog, progress, isCancelled);
//   measured.candidates;        // one per measurable path, in the order given
//   measured.credentialPaths;   // credential-like files inside them
//   measured.problems;          // {"/nowhere", "no such file or folder"}
#pragma once

#include "cleanup/CleanupCandidate.h"
#include "common/Json.h"
#include "space/ScanProgress.h"
#include "space/SpaceCatalog.h"

#include <functional>
#include <string>
#include <vector>

namespace corvel {

// A selected path that takes no part in the simulation, and why.
struct CleanupPathProblem {
    std::string path;
    std::string reason;

    bool operator==(const CleanupPathProblem&) const = default;
};

CORVEL_JSON_RECORD(CleanupPathProblem, path, reason)

struct MeasuredSelection {
    std::vector<CleanupCandidate> candidates;
    std::vector<std::string> credentialPaths;
    std::vector<CleanupPathProblem> problems;
    // Measured paths whose figures are a lower bound (folders inside could not be read).
    std::vector<CleanupPathProblem> warnings;
    bool wasCancelled = false;
};

namespace CleanupMeasurement {

// `paths` are made absolute against the current folder. Never throws for a path: an unusable
// one is a problem. `isCancelled` is polled by the scanner's threads.
MeasuredSelection measure(const std::vector<std::string>& paths, const SpaceCatalog& catalog, ScanProgress& progress,
                          const std::function<bool()>& isCancelled);

}  // namespace CleanupMeasurement
}  // namespace corvel
