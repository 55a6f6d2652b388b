// The one FIEMAP loop on Linux: every extent of an open file, asked for in batches and decoded by
// FiemapReply. Used by the file attributes (one file at a time) and by the space scanner (every
// file on a file system that can share blocks).
//
//   auto extents = FiemapQuery::extents(fd, FiemapQuery::Mode::plain);
#pragma once

#include "space/FiemapReply.h"

#include <optional>
#include <vector>

namespace corvel::FiemapQuery {

enum class Mode {
    plain,      // extents as they are; delayed allocations read as "location unknown"
    syncFirst,  // FIEMAP_FLAG_SYNC: write delayed allocations out first, for real offsets
};

// Absent when the first query fails (the file system has no FIEMAP) or its reply cannot be
// decoded; a later failure ends the list with what was read so far.
std::optional<std::vector<FiemapExtent>> extents(int fd, Mode mode);

}  // namespace corvel::FiemapQuery
