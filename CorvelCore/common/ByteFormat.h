// The one way byte amounts are shown to people: decimal units (1 KB = 1000 bytes), so that
// figures match what the platform's own tools and disk vendors print.
//
//   ByteFormat::string(1234567890) == "1.23 GB"
#pragma once

#include <cstdint>
#include <string>

namespace corvel::ByteFormat {

// 0 → "Zero KB"; 1 → "1 byte"; < 1000 → "N bytes"; then KB (0 fraction digits), MB (1), GB, TB,
// PB (2), rounded half away from zero, trailing zeros dropped; a value that rounds to 1000 of a
// unit moves up one unit; negatives carry a leading "-".
std::string string(std::int64_t bytes);

}  // namespace corvel::ByteFormat
