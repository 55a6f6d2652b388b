// One swap area the Linux kernel uses, from /proc/swaps. A swap file lives on a file system and
// takes its size there whether or not anything is swapped out; a swap partition takes none.
//
//   for (const auto& area : SwapArea::parseList(text)) if (area.isFile()) { … area.sizeBytes … }
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct SwapArea {
    std::string path;  // escapes undone ("/swap file" for "/swap\040file")
    std::string type;  // "file" or "partition"
    std::int64_t sizeBytes = 0;
    std::int64_t usedBytes = 0;

    bool isFile() const { return type == "file"; }

    // The text of /proc/swaps: a header line, then "Filename Type Size Used Priority" with sizes
    // in KiB. Throws ListingParseError on a line of another shape.
    static std::vector<SwapArea> parseList(std::string_view text);

    bool operator==(const SwapArea&) const = default;
};
CORVEL_JSON_RECORD(SwapArea, path, type, sizeBytes, usedBytes)

}  // namespace corvel
