// A space scan written in the JSON export format of the disk-usage browsers (`ncdu -f FILE` and
// `gdu -f FILE` open it): `[1, 2, {metadata}, [{root}, children…]]`, a folder being an array whose
// first element describes it, a file an object; `asize` is the apparent size and `dsize` the
// allocated size. The scan keeps only the largest files of each folder by name, so the rest of a
// folder's files appear as one entry named "(N smaller items)" holding their sizes: the totals are
// the scan's own, hard-linked files counted once. Folders that could not be read carry
// "read_error", mount points not entered "excluded": "otherfs", excluded ones "excluded": "pattern".
//
//   AtomicFile::write(file, NcduExport::write(tree, "1.4.0", machine.now()));
#pragma once

#include "common/ISO8601.h"
#include "space/ScanTree.h"

#include <string>

namespace corvel::NcduExport {

std::string write(const ScanTree& tree, const std::string& version, TimePoint exportedAt);

}  // namespace corvel::NcduExport
