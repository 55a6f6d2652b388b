#include "cleanup/CleanupRun.h"

#include "cleanup/CleanupPlanner.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "space/ScanReporting.h"
#include "space/SpaceScanner.h"

#include <future>

namespace corvel::CleanupRun {
namespace {

// Every path some process holds open at or below `folders`.
std::vector<std::string> pathsInUse(OpenFileListing* openFiles, const std::vector<std::string>& folders) {
    std::vector<std::string> paths;
    if (!openFiles) return paths;
    for (const auto& folder : folders)
        for (auto& usage : openFiles->usages(folder)) paths.push_back(ScanReporting::displayText(usage.path));
    return paths;
}

std::set<std::string> runningNames(RunningApplications* running) {
    return running ? running->names() : std::set<std::string>{};
}

// Discovery runs beside the walk: both mostly wait, one on tools, the other on the disk.
std::future<std::vector<StorageVolume>> askVolumes(const CleanupSources& sources) {
    if (!sources.volumes) return std::async(std::launch::deferred, [] { return std::vector<StorageVolume>{}; });
    return std::async(std::launch::async, sources.volumes);
}

std::string problemLine(const std::vector<CleanupPathProblem>& problems) {
    std::vector<std::string> parts;
    for (const auto& problem : problems) parts.push_back(problem.path + ": " + problem.reason);
    return join(parts, "; ");
}

// The volume's name and free space for the simulation; a selection outside every known volume
// still gets a simulation, with its free space unknown (zero) and said so.
std::pair<std::string, std::int64_t> volumeFacts(const std::string& path, const std::vector<StorageVolume>& volumes,
                                                 std::vector<CleanupPathProblem>& warnings) {
    if (const auto volume = volumeHolding(path, volumes)) return {volume->name, volume->availableBytes};
    warnings.push_back({path, "no known volume holds it; its free space is unknown"});
    return {"unknown volume", 0};
}

}  // namespace

std::optional<StorageVolume> volumeHolding(const std::string& path, const std::vector<StorageVolume>& volumes) {
    const StorageVolume* best = nullptr;
    for (const auto& volume : volumes) {
        if (volume.mountPoint.empty() || !isWithin(path, normalPath(volume.mountPoint))) continue;
        if (!best || volume.mountPoint.size() > best->mountPoint.size()) best = &volume;
    }
    if (!best) return std::nullopt;
    return *best;
}

CleanupRunResult simulatePaths(const std::vector<std::string>& paths, const CleanupSources& sources,
                               ScanProgress& progress, const std::function<bool()>& isCancelled) {
    auto volumes = askVolumes(sources);
    MeasuredSelection measured = CleanupMeasurement::measure(paths, sources.catalog, progress, isCancelled);
    const auto known = volumes.get();

    CleanupRunResult result;
    result.problems = std::move(measured.problems);
    result.warnings = std::move(measured.warnings);
    if (measured.wasCancelled) {
        result.wasCancelled = true;
        return result;
    }
    if (measured.candidates.empty()) throw CleanupRunError("nothing to simulate: " + problemLine(result.problems));

    // One simulation speaks for one volume's free space: the volume of the first measured path.
    const auto volume = volumeHolding(measured.candidates.front().path, known);
    std::vector<CleanupCandidate> selection;
    for (auto& candidate : measured.candidates) {
        const auto holder = volumeHolding(candidate.path, known);
        if (volume && holder && holder->id != volume->id) {
            result.problems.push_back({candidate.path, "on another volume (" + holder->name + ") than " +
                                                           measured.candidates.front().path +
                                                           "; simulate it on its own"});
            continue;
        }
        selection.push_back(std::move(candidate));
    }
    const auto [volumeName, volumeFree] = volumeFacts(selection.front().path, known, result.warnings);

    std::vector<std::string> folders;
    for (const auto& candidate : selection) folders.push_back(candidate.path);
    result.simulation = CleanupPlanner::simulate(
        selection, volumeName, volumeFree, pathsInUse(sources.openFiles.get(), folders),
        runningNames(sources.runningApplications.get()), measured.credentialPaths, sources.now);
    return result;
}

CleanupRunResult suggest(const std::string& root, const CleanupSuggestionOptions& options,
                         const CleanupSources& sources, ScanProgress& progress,
                         const std::function<bool()>& isCancelled) {
    auto volumes = askVolumes(sources);
    SpaceScanOptions scanOptions;
    scanOptions.findDuplicates = false;
    scanOptions.largestFileCount = 0;
    scanOptions.keptFilesPerFolder = 0;
    scanOptions.listCredentials = true;
    ScanTree tree;
    try {
        tree = SpaceScanner::scan(root, scanOptions, progress, isCancelled);
    } catch (const SpaceScanError& failure) {
        throw CleanupRunError(failure.what());
    }
    const auto known = volumes.get();

    CleanupRunResult result;
    if (tree.wasCancelled) {
        result.wasCancelled = true;
        return result;
    }
    result.suggestions = CleanupSuggester::fromScan(tree, sources.catalog, sources.now, options);
    std::vector<CleanupCandidate> selection;
    for (const auto& suggestion : result.suggestions) selection.push_back(suggestion.candidate);
    std::vector<std::string> credentials;
    for (const auto& path : tree.credentialFiles) credentials.push_back(ScanReporting::displayText(path));

    const auto [volumeName, volumeFree] = volumeFacts(tree.rootPath, known, result.warnings);
    // Nothing proposed needs no look at processes: the simulation is empty either way.
    const auto inUse =
        selection.empty() ? std::vector<std::string>{} : pathsInUse(sources.openFiles.get(), {tree.rootPath});
    const auto running = selection.empty() ? std::set<std::string>{} : runningNames(sources.runningApplications.get());
    result.simulation =
        CleanupPlanner::simulate(selection, volumeName, volumeFree, inUse, running, credentials, sources.now);
    return result;
}

}  // namespace corvel::CleanupRun
