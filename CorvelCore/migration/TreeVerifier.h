// Compares a copied tree with its original by content: every regular file's SHA-256 and size,
// every symbolic link's target, every entry's type and permission bits. Files are hashed in
// parallel, one fixed buffer per worker, so memory stays flat whatever the file sizes.
//
//   MigrationProgress progress;
//   TreeComparison result = TreeVerifier::compare("/home/me/ws", "/mnt/work/ws", {}, progress, isCancelled);
//   if (result.isIdentical) ...   // else result.differences says what and where
//
// Reads only. A file that changes while it is read is reported as different, never trusted; a
// file or folder that cannot be read is an `unreadable` difference (the copy cannot be called
// identical); FIFOs, sockets and devices are listed as skipped and never opened. Links are never
// followed, and the roots themselves may be links to the trees.
#pragma once

#include "migration/MigrationProgress.h"
#include "migration/TreeDifference.h"

#include <functional>
#include <string>

namespace corvel::TreeVerifier {

struct Options {
    unsigned workers = 0;  // 0: one per core
};

// Both roots are normal absolute paths of existing folders (the caller checks).
TreeComparison compare(const std::string& source, const std::string& copy, const Options& options,
                       MigrationProgress& progress, const std::function<bool()>& isCancelled);

}  // namespace corvel::TreeVerifier
