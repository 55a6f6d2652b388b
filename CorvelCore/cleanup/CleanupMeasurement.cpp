#include "cleanup/CleanupMeasurement.h"

#include "common/PathText.h"
#include "space/CredentialNames.h"
#include "space/FileAttributes.h"
#include "space/ScanReporting.h"
#include "space/SpaceScanner.h"

#include <fmt/format.h>
#include <cerrno>
#include <cstring>

namespace corvel::CleanupMeasurement {
namespace {

// A cleanup removes what lies in the folder, so the walk stays on its volume and leaves the
// duplicate search (which reads file contents) out.
SpaceScanOptions scanOptions() {
    SpaceScanOptions options;
    options.findDuplicates = false;
    options.largestFileCount = 0;
    options.keptFilesPerFolder = 0;
    options.listCredentials = true;
    return options;
}

void measureFolder(const std::string& path, const SpaceCatalog& catalog, ScanProgress& progress,
                   const std::function<bool()>& isCancelled, MeasuredSelection& measured) {
    ScanTree tree;
    try {
        tree = SpaceScanner::scan(path, scanOptions(), progress, isCancelled);
    } catch (const SpaceScanError& failure) {
        // The message already names the path: keep only the reason after it.
        const std::string text = failure.what();
        const std::string prefix = "cannot scan " + path + ": ";
        measured.problems.push_back({path, text.starts_with(prefix) ? text.substr(prefix.size()) : text});
        return;
    }
    if (tree.wasCancelled) measured.wasCancelled = true;
    auto candidate = CleanupCandidate::from(ScanReporting::folderNodeOf(tree, *tree.root, catalog));
    // A scan names its root by the whole path; a candidate's name is the last component.
    candidate.name = ScanReporting::displayText(lastComponent(path));
    measured.candidates.push_back(std::move(candidate));
    for (auto& file : tree.credentialFiles) measured.credentialPaths.push_back(ScanReporting::displayText(file));
    const auto unread = tree.deniedDirectories + tree.unreadableFiles;
    if (unread > 0)
        measured.warnings.push_back(
            {path, fmt::format("{} item(s) inside could not be read; its figures are a lower bound", unread)});
}

void measureFile(const std::string& path, const SpaceCatalog& catalog, MeasuredSelection& measured) {
    errno = 0;
    const auto facts = FileAttributes::facts(path);
    if (!facts) {
        measured.problems.push_back({path, std::strerror(errno != 0 ? errno : EIO)});
        return;
    }
    CleanupCandidate candidate;
    candidate.path = ScanReporting::displayText(path);
    candidate.name = ScanReporting::displayText(lastComponent(path));
    candidate.classification = catalog.classify(candidate.path, false);
    candidate.allocatedBytes = facts->allocatedBytes;
    // Another name of a hard-linked file keeps its blocks alive.
    candidate.exclusiveBytes = facts->linkCount > 1 ? 0 : facts->exclusiveBytes.value_or(facts->allocatedBytes);
    candidate.fileCount = 1;
    candidate.lastModified = facts->modified;
    if (CredentialNames::looksLikeCredential(lastComponent(path))) measured.credentialPaths.push_back(candidate.path);
    measured.candidates.push_back(std::move(candidate));
}

}  // namespace

MeasuredSelection measure(const std::vector<std::string>& paths, const SpaceCatalog& catalog, ScanProgress& progress,
                          const std::function<bool()>& isCancelled) {
    MeasuredSelection measured;
    for (const auto& typed : paths) {
        if (measured.wasCancelled || (isCancelled && isCancelled())) {
            measured.wasCancelled = true;
            break;
        }
        const std::string path = normalPath(typed);
        errno = 0;
        const auto status = FileAttributes::status(path);
        if (!status) {
            const int error = errno != 0 ? errno : EIO;
            measured.problems.push_back(
                {path, error == ENOENT || error == ENOTDIR ? "no such file or folder" : std::strerror(error)});
            continue;
        }
        if (status->type == DirectoryReader::EntryType::directory) {
            measureFolder(path, catalog, progress, isCancelled, measured);
        } else {
            measureFile(path, catalog, measured);
        }
    }
    return measured;
}

}  // namespace corvel::CleanupMeasurement
