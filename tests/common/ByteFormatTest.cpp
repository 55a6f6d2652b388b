#include "common/ByteFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

// One row per boundary: units, their fraction digits, rounding half away from zero, and the
// step to the next unit when rounding reaches a thousand.
struct Row {
    std::int64_t bytes;
    const char* text;
};

constexpr Row rows[] = {
    {0, "Zero KB"},
    {1, "1 byte"},
    {2, "2 bytes"},
    {999, "999 bytes"},
    {1000, "1 KB"},
    {1499, "1 KB"},
    {1500, "2 KB"},
    {999499, "999 KB"},
    {999500, "1 MB"},
    {1234567, "1.2 MB"},
    {1250000, "1.3 MB"},
    {999999999, "1 GB"},
    {1234567890, "1.23 GB"},
    {1500000000, "1.5 GB"},
    {25000000000, "25 GB"},
    {999994999999, "999.99 GB"},
    {2000000000000, "2 TB"},
    {999999999999999, "1 PB"},
    {3456000000000000, "3.46 PB"},
    {std::numeric_limits<std::int64_t>::max(), "9223.37 PB"},
    {-1, "-1 byte"},
    {-2, "-2 bytes"},
    {-1500, "-2 KB"},
    {-1234567890, "-1.23 GB"},
    {std::numeric_limits<std::int64_t>::min(), "-9223.37 PB"},
};

TEST(ByteFormat, EachBoundaryHasItsText) {
    for (const auto& row : rows) EXPECT_EQ(corvel::ByteFormat::string(row.bytes), row.text) << row.bytes;
}

}  // namespace
