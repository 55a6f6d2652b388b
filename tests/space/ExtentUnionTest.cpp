#include <gtest/gtest.h>

#include <limits>

#include "space/ExtentUnion.h"

namespace corvel {
namespace {

using Ranges = std::vector<ExtentRange>;

TEST(ExtentUnionMerge, CoalescesTouchingAndOverlappingRanges) {
    EXPECT_EQ(ExtentUnion::merge({{0, 9}, {10, 19}}), (Ranges{{0, 19}}));
    EXPECT_EQ(ExtentUnion::merge({{0, 9}, {5, 30}}), (Ranges{{0, 30}}));
    EXPECT_EQ(ExtentUnion::merge({{0, 100}, {10, 20}}), (Ranges{{0, 100}}));
    EXPECT_EQ(ExtentUnion::merge({{0, 9}, {11, 19}}), (Ranges{{0, 9}, {11, 19}}));
}

TEST(ExtentUnionMerge, SortsByLowerBoundBeforeFolding) {
    EXPECT_EQ(ExtentUnion::merge({{50, 59}, {0, 9}, {10, 12}, {40, 49}}), (Ranges{{0, 12}, {40, 59}}));
}

TEST(ExtentUnionMerge, DropsEmptyRangesAndHandlesTheEdgesOfTheOffsetSpace) {
    EXPECT_EQ(ExtentUnion::merge({{5, 4}, {1, 1}}), (Ranges{{1, 1}}));
    EXPECT_TRUE(ExtentUnion::merge({}).empty());
    constexpr auto top = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(ExtentUnion::merge({{top - 10, top}, {top - 3, top}}), (Ranges{{top - 10, top}}));
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
