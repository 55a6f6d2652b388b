#include "common/CheckedArithmetic.h"

#include <gtest/gtest.h>

#include <limits>

using namespace corvel;

namespace {
constexpr auto maxBytes = std::numeric_limits<std::int64_t>::max();
constexpr auto minBytes = std::numeric_limits<std::int64_t>::min();
}  // namespace

TEST(CheckedArithmetic, ExactResultsInRange) {
    EXPECT_EQ(checkedAdd(maxBytes - 1, 1), maxBytes);
    EXPECT_EQ(checkedSubtract(0, maxBytes), -maxBytes);
    EXPECT_EQ(checkedMultiply(1000, 512000), 512000000);
}

TEST(CheckedArithmeticDeathTest, OverflowIsFatalNotAWrap) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(checkedAdd(maxBytes, 1), "overflow");
    EXPECT_DEATH(checkedSubtract(minBytes, 1), "overflow");
    EXPECT_DEATH(checkedMultiply(maxBytes / 2 + 1, 2), "overflow");
}
