// Decodes `lsblk -J -b -O` into BlockDevice trees.
//
// util-linux changed its JSON over the years: before 2.37 every value was a string ("size":
// "512110190592", "rota": "0"), later ones print numbers and booleans. Both are accepted, so a
// recording from an older distribution decodes the same way.
#pragma once

#include <string_view>
#include <vector>

#include "storage/BlockDevice.h"

namespace corvel::LsblkParser {

// Throws DecodingError when the text is not JSON or has no "blockdevices" list. Entries
// without a name are skipped.
std::vector<BlockDevice> parse(std::string_view json);

}  // namespace corvel::LsblkParser
