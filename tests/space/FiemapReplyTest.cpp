#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "space/FiemapReply.h"

namespace corvel {
namespace {

// Lays out a buffer the way the kernel fills it in.
class FiemapBuffer {
public:
    FiemapBuffer(std::uint32_t capacity, std::uint32_t mapped)
        : bytes_(FiemapReply::headerBytes + capacity * FiemapReply::extentBytes) {
        put(FiemapReply::mappedExtentsOffset, mapped);
        put(FiemapReply::extentCountOffset, capacity);
    }

    FiemapBuffer& extent(std::size_t index, std::uint64_t logical, std::uint64_t physical, std::uint64_t length,
                         std::uint32_t flags) {
        const std::size_t base = FiemapReply::headerBytes + index * FiemapReply::extentBytes;
        put(base, logical);
        put(base + 8, physical);
        put(base + 16, length);
        put(base + 24, std::uint64_t{0xDEADBEEF});  // reserved words must be ignored
        put(base + 40, flags);
        return *this;
    }

    std::span<const std::byte> bytes() const { return bytes_; }
    std::span<const std::byte> first(std::size_t count) const {
        return std::span<const std::byte>(bytes_).first(count);
    }

private:
    template <class T>
    void put(std::size_t offset, T value) {
        std::memcpy(bytes_.data() + offset, &value, sizeof value);
    }

    std::vector<std::byte> bytes_;
};

TEST(FiemapReplyDecode, ReadsEveryMappedExtent) {
    FiemapBuffer buffer(4, 2);
    buffer.extent(0, 0, 1 << 20, 8192, FiemapReply::flagShared).extent(1, 8192, 5 << 20, 4096, FiemapReply::flagLast);
    const auto batch = FiemapReply::decode(buffer.bytes());
    ASSERT_TRUE(batch);
    EXPECT_TRUE(batch->isLast);
    ASSERT_EQ(batch->extents.size(), 2u);
    EXPECT_EQ(batch->extents[0], (FiemapExtent{0, 1 << 20, 8192, FiemapReply::flagShared}));
    EXPECT_EQ(batch->extents[1], (FiemapExtent{8192, 5 << 20, 4096, FiemapReply::flagLast}));
}

TEST(FiemapReplyDecode, AnEmptyMappingIsNotAnError) {
    const auto batch = FiemapReply::decode(FiemapBuffer(8, 0).bytes());
    ASSERT_TRUE(batch);
    EXPECT_TRUE(batch->extents.empty());
    EXPECT_FALSE(batch->isLast);
}

TEST(FiemapReplyDecode, RejectsBuffersThatCannotHoldWhatTheyClaim) {
    FiemapBuffer buffer(2, 2);
    buffer.extent(0, 0, 0, 4096, 0).extent(1, 4096, 4096, 4096, FiemapReply::flagLast);
    EXPECT_FALSE(FiemapReply::decode(buffer.first(FiemapReply::headerBytes - 1)));
    EXPECT_FALSE(FiemapReply::decode(buffer.first(FiemapReply::headerBytes + 2 * FiemapReply::extentBytes - 1)));
    EXPECT_FALSE(FiemapReply::decode(FiemapBuffer(2, 3).bytes()));  // more mapped than room
}

// Continues after the last extent until the file ends, and stops when a reply does not advance.
TEST(FiemapReplyNextStart, ContinuesAfterTheLastExtentUntilTheFileEnds) {
    FiemapReply::Batch batch{{{0, 0, 4096, 0}, {4096, 100, 8192, 0}}, false};
    EXPECT_EQ(FiemapReply::nextStart(batch, 0), std::optional<std::uint64_t>(12288));
    EXPECT_FALSE(FiemapReply::nextStart(batch, 12288));
    batch.isLast = true;
    EXPECT_FALSE(FiemapReply::nextStart(batch, 0));
    EXPECT_FALSE(FiemapReply::nextStart(FiemapReply::Batch{}, 0));
    const FiemapReply::Batch overflowing{{{std::numeric_limits<std::uint64_t>::max() - 10, 0, 4096, 0}}, false};
    EXPECT_FALSE(FiemapReply::nextStart(overflowing, 0));
}

TEST(FiemapReplyRanges, GivesClosedDeviceRangesOfExtentsWithAPlace) {
    const std::vector<FiemapExtent> extents{
        {0, 1000, 100, FiemapReply::flagShared},
        {100, 0, 4096, FiemapReply::flagUnknown | FiemapReply::flagDelayedAllocation},
        {200, 0, 60, FiemapReply::flagInline | FiemapReply::flagLast},
        {300, 5000, 0, 0},
        {400, 9000, 50, FiemapReply::flagUnwritten},
        {500, static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()), 2, 0},
    };
    EXPECT_EQ(FiemapReply::physicalRanges(extents), (std::vector<ExtentRange>{{1000, 1099}, {9000, 9049}}));
}

TEST(FiemapReplyExclusive, SumsOnlyUnsharedExtents) {
    const std::vector<FiemapExtent> extents{
        {0, 1000, 4096, FiemapReply::flagShared},
        {4096, 9000, 8192, 0},
        {12288, 20000, 4096, FiemapReply::flagShared | FiemapReply::flagLast},
        {16384, 30000, 100, FiemapReply::flagUnwritten},
    };
    EXPECT_EQ(FiemapReply::exclusiveBytes(extents), 8292);
    EXPECT_EQ(FiemapReply::exclusiveBytes({}), 0);
}

// Reproducers found by fuzzing the decoder: lengths no file can have used to abort the process
// through the checked sum, or to give ranges whose byte count overflows.
TEST(FiemapReplyCorrupt, ImpossibleExtentsAreLeftOutAndSumsStopAtTheLargestValue) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::uint64_t quarter = std::uint64_t{1} << 61;
    const struct {
        std::vector<FiemapExtent> extents;
        std::int64_t exclusive;
        std::vector<ExtentRange> ranges;
    } cases[] = {
        {{{0, 0, most, 0}, {0, 0, most, 0}},
         static_cast<std::int64_t>(most),
         {{0, static_cast<std::int64_t>(most - 1)}, {0, static_cast<std::int64_t>(most - 1)}}},
        {{{0, 0, most + 1, 0}, {most, most, 2, 0}}, 0, {}},
        {{{0, 0, quarter, 0},
          {0, quarter, quarter, 0},
          {0, 2 * quarter, quarter, 0},
          {0, 3 * quarter, quarter, 0},
          {0, 0, quarter, 0}},
         static_cast<std::int64_t>(most),
         {{0, static_cast<std::int64_t>(quarter - 1)},
          {static_cast<std::int64_t>(quarter), static_cast<std::int64_t>(2 * quarter - 1)},
          {static_cast<std::int64_t>(2 * quarter), static_cast<std::int64_t>(3 * quarter - 1)},
          {0, static_cast<std::int64_t>(quarter - 1)}}},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(FiemapReply::exclusiveBytes(item.extents), item.exclusive);
        const auto ranges = FiemapReply::physicalRanges(item.extents);
        EXPECT_EQ(ranges, item.ranges);
        ExtentUnion all;
        all.add(ranges);
        EXPECT_GE(all.bytes(), 0);
    }
}

}  // namespace
}  // namespace corvel
