#include "common/ByteFormat.h"

#include <gtest/gtest.h>

#include <limits>

using corvel::ByteFormat::string;

TEST(ByteFormat, SmallAmountsAreCountedInBytes) {
    EXPECT_EQ(string(0), "Zero KB");
    EXPECT_EQ(string(1), "1 byte");
    EXPECT_EQ(string(2), "2 bytes");
    EXPECT_EQ(string(999), "999 bytes");
}

TEST(ByteFormat, EachUnitHasItsOwnFractionDigits) {
    EXPECT_EQ(string(1000), "1 KB");
    EXPECT_EQ(string(1500), "2 KB");  // half away from zero, no fraction digits in KB
    EXPECT_EQ(string(1499), "1 KB");
    EXPECT_EQ(string(1234567), "1.2 MB");
    EXPECT_EQ(string(1250000), "1.3 MB");
    EXPECT_EQ(string(1234567890), "1.23 GB");
    EXPECT_EQ(string(25000000000), "25 GB");
    EXPECT_EQ(string(1500000000), "1.5 GB");  // trailing zero dropped
    EXPECT_EQ(string(2000000000000), "2 TB");
    EXPECT_EQ(string(3456000000000000), "3.46 PB");
}

TEST(ByteFormat, RoundingUpToAThousandMovesToTheNextUnit) {
    EXPECT_EQ(string(999999), "1 MB");
    EXPECT_EQ(string(999500), "1 MB");
    EXPECT_EQ(string(999499), "999 KB");
    EXPECT_EQ(string(999999999), "1 GB");
    EXPECT_EQ(string(999994999999), "999.99 GB");
}

TEST(ByteFormat, NegativeAmountsCarryASign) {
    EXPECT_EQ(string(-1), "-1 byte");
    EXPECT_EQ(string(-1500), "-2 KB");
    EXPECT_EQ(string(-1234567890), "-1.23 GB");
    EXPECT_EQ(string(std::numeric_limits<std::int64_t>::min()), "-9223.37 PB");
    EXPECT_EQ(string(std::numeric_limits<std::int64_t>::max()), "9223.37 PB");
}
