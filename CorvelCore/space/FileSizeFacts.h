// The size facts of one file, gathered in one metadata call: what it is (device, inode, links),
// how long it is, what it occupies, and what deleting it would really free.
//
// `allocatedBytes` counts blocks shared with clones; `exclusiveBytes` counts only the blocks that
// belong to this file alone and is absent where the file system cannot say.
#pragma once

#include <cstdint>
#include <optional>

#include "common/ISO8601.h"
#include "common/Json.h"

namespace corvel {

struct FileSizeFacts {
    std::int32_t device = 0;
    std::uint64_t fileID = 0;
    std::uint32_t linkCount = 1;
    std::optional<TimePoint> modified;
    std::int64_t logicalBytes = 0;
    std::int64_t allocatedBytes = 0;
    std::optional<std::int64_t> exclusiveBytes;

    bool operator==(const FileSizeFacts&) const = default;
};

CORVEL_JSON_RECORD(FileSizeFacts, device, fileID, linkCount, modified, logicalBytes, allocatedBytes, exclusiveBytes)

// A file time as the OS reports it (whole seconds since 1970 plus nanoseconds), without the
// rounding a conversion through floating point would bring. Clamped to the years 1 to 9999 and
// to nanoseconds within one second, so that no value read from outside can overflow.
TimePoint fileTime(std::int64_t seconds, std::int64_t nanoseconds);

}  // namespace corvel
