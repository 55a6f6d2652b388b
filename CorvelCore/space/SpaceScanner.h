// The space scanner: a parallel walk of one folder tree that measures what every folder really
// occupies. It counts each hard-linked inode once, records per folder the bytes that removing it
// would free, never follows symbolic links, stays on the root's device unless told otherwise,
// and skips second views of a volume counted elsewhere (macOS shows the data volume again under
// /System/Volumes/Data). Unreadable folders are counted and the walk goes on.
//
// The walk runs on many threads, more than there are cores: on a cold cache the disk answers
// many metadata requests at once, and on a warm one the threads keep every core busy. It works
// on open directory handles (one metadata call per entry, none per folder beyond opening it) and
// writes into a compact ScanTree; ScanReporting turns that tree into SpaceNodes and a report.
//
//   ScanProgress progress;
//   ScanTree tree = SpaceScanner::scan("/home/me", {}, progress, [&] { return stop.load(); });
//   SpaceScanReport report = ScanReporting::report(tree, catalog, 10);
#pragma once

#include "space/ScanProgress.h"
#include "space/ScanTree.h"

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

struct SpaceScanOptions {
    // Mount points below the root are neither entered nor counted.
    bool oneFileSystem = true;
    // Glob patterns; one with a "/" is matched against the whole path, any other against names.
    std::vector<std::string> excludes;
    // Walker threads; 0 picks defaultThreads().
    unsigned threads = 0;
    // Files of a folder kept by name (the largest); the others only count in the totals.
    std::size_t keptFilesPerFolder = 16;
    std::size_t largestFileCount = 20;
    bool findDuplicates = true;
    std::int64_t duplicateMinimumBytes = 1024 * 1024;
    // Also list every credential-like file name wherever it lies (ScanTree::credentialFiles), not
    // only those in a trash: a cleanup must not empty a folder that holds the only copy of a key.
    bool listCredentials = false;
    // Paths that show a volume a second time; skipped when they lie below the root.
    std::vector<std::string> countedElsewhere{"/System/Volumes/Data"};
};

// The root itself cannot be scanned; the message names the path and the reason.
class SpaceScanError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace SpaceScanner {

// Eight per core, between 16 and 32: on a cold cache 16 threads were fastest even on two cores.
unsigned defaultThreads();

// The root as the scan reports it: absolute, normalised, without a trailing "/".
std::string normalisedRoot(const std::string& root);

// Walks `root`. `isCancelled` is polled from the walker threads (so it must be thread-safe);
// once it answers true the walk stops and the tree holds what was measured, with wasCancelled.
// Throws SpaceScanError when the root is missing, not a folder or unreadable.
ScanTree scan(const std::string& root, const SpaceScanOptions& options, ScanProgress& progress,
              const std::function<bool()>& isCancelled);

}  // namespace SpaceScanner
}  // namespace corvel
