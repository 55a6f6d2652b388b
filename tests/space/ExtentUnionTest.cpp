#include <gtest/gtest.h>

#include <limits>

#include "space/ExtentUnion.h"

namespace corvel {
namespace {

using Ranges = std::vector<ExtentRange>;

// Touching and overlapping ranges coalesce after sorting by lower bound; empty ranges drop out,
// the top of the offset space included.
TEST(ExtentUnionMerge, SortsThenCoalescesTouchingAndOverlappingRanges) {
    constexpr auto top = std::numeric_limits<std::int64_t>::max();
    const std::pair<Ranges, Ranges> rows[] = {
        {{{0, 9}, {10, 19}}, {{0, 19}}},
        {{{0, 9}, {5, 30}}, {{0, 30}}},
        {{{0, 100}, {10, 20}}, {{0, 100}}},
        {{{0, 9}, {11, 19}}, {{0, 9}, {11, 19}}},
        {{{50, 59}, {0, 9}, {10, 12}, {40, 49}}, {{0, 12}, {40, 59}}},
        {{{5, 4}, {1, 1}}, {{1, 1}}},
        {{}, {}},
        {{{top - 10, top}, {top - 3, top}}, {{top - 10, top}}},
    };
    for (const auto& [ranges, merged] : rows)
        EXPECT_EQ(ExtentUnion::merge(ranges), merged) << ::testing::PrintToString(ranges);
}

TEST(ExtentUnionBytes, CountsEveryCoveredByteOnce) {
    ExtentUnion extents;
    EXPECT_EQ(extents.bytes(), 0);
    extents.add(Ranges{{0, 19}});
    EXPECT_EQ(extents.bytes(), 20);
    // A clone's ranges are the same blocks: nothing new.
    extents.add(Ranges{{0, 19}});
    EXPECT_EQ(extents.bytes(), 20);
    extents.add(Ranges{{15, 24}, {100, 100}});
    EXPECT_EQ(extents.bytes(), 26);
    // bytes() leaves the stored list alone; compact() replaces it by the merge.
    EXPECT_EQ(extents.ranges.size(), 4u);
    extents.compact();
    EXPECT_EQ(extents.ranges, (Ranges{{0, 24}, {100, 100}}));
    EXPECT_EQ(extents.bytes(), 26);
}

TEST(ExtentUnionAdd, MergesOnlyOncePastTheThreshold) {
    ExtentUnion extents;
    Ranges overlapping(ExtentUnion::compactionThreshold, ExtentRange{0, 4095});
    extents.add(overlapping);
    EXPECT_EQ(extents.ranges.size(), ExtentUnion::compactionThreshold);
    extents.add(Ranges{{8192, 8192 + 4095}});
    EXPECT_EQ(extents.ranges, (Ranges{{0, 4095}, {8192, 12287}}));
    EXPECT_EQ(extents.bytes(), 8192);
}

TEST(ExtentUnionJson, RoundTripsWithFieldNamesAsKeys) {
    ExtentUnion extents;
    extents.add(Ranges{{3, 7}});
    const Json json = extents;
    EXPECT_EQ(json.dump(), R"({"ranges":[{"lower":3,"upper":7}]})");
    EXPECT_EQ(json.get<ExtentUnion>(), extents);
    EXPECT_THROW((void)Json::parse(R"({"ranges":[{"lower":3}]})").get<ExtentUnion>(), DecodingError);
}

}  // namespace
}  // namespace corvel
