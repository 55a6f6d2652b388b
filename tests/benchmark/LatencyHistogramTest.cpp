#include "benchmark/LatencyHistogram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>

namespace corvel {
namespace {

TEST(LatencyHistogram, BucketsCoverEveryValueContiguouslyWithinTwoPercent) {
    // Each value lands in a bucket whose range holds it, and bucket widths stay under 1/64 of
    // the value beyond the exact range: what bounds the percentile error.
    for (std::uint64_t value :
         std::initializer_list<std::uint64_t>{0, 1ULL, 63ULL, 64ULL, 65ULL, 127ULL, 128ULL, 1000ULL, 123456789ULL,
                                              (1ULL << 40) + 12345ULL, UINT64_MAX}) {
        const auto bucket = LatencyHistogram::bucketOf(value);
        EXPECT_LE(LatencyHistogram::bucketLow(bucket), value) << value;
        EXPECT_GE(LatencyHistogram::bucketLow(bucket) + (LatencyHistogram::bucketWidth(bucket) - 1), value) << value;
        if (value >= 64) {
            EXPECT_LE(static_cast<double>(LatencyHistogram::bucketWidth(bucket)), static_cast<double>(value) / 64.0)
                << value;
        }
    }
    for (std::size_t bucket = 1; bucket < LatencyHistogram::bucketOf(UINT64_MAX); ++bucket)
        ASSERT_EQ(LatencyHistogram::bucketLow(bucket),
                  LatencyHistogram::bucketLow(bucket - 1) + LatencyHistogram::bucketWidth(bucket - 1))
            << bucket;
}

TEST(LatencyHistogram, PercentilesOfKnownSamples) {
    LatencyHistogram uniform;  // 1 µs to 100 ms in 1 µs steps: the p-th percentile is p × 100 ms
    for (std::uint64_t micros = 1; micros <= 100'000; ++micros) uniform.record(micros * 1000);
    struct Case {
        double fraction;
        double expected;
    };
    for (const Case& c : {Case{0.5, 50e6}, Case{0.99, 99e6}, Case{0.999, 99.9e6}, Case{0.01, 1e6}}) {
        EXPECT_NEAR(uniform.percentile(c.fraction), c.expected, c.expected * 0.01) << c.fraction;
    }
    // The extremes stay within the samples seen and within a bucket of them.
    EXPECT_NEAR(uniform.percentile(0), 1000, 10);
    EXPECT_GE(uniform.percentile(0), 1000);
    EXPECT_LE(uniform.percentile(1), 100'000'000);
    EXPECT_EQ(uniform.count(), 100'000u);
    EXPECT_NEAR(uniform.mean(), 50'000'500, 1);

    LatencyHistogram tail;  // 999 fast requests and one slow one: only p99.9 and above see it
    for (int i = 0; i < 999; ++i) tail.record(20'000);
    tail.record(5'000'000);
    EXPECT_NEAR(tail.percentile(0.99), 20'000, 200);
    EXPECT_NEAR(tail.percentile(0.999), 20'000, 200);
    EXPECT_NEAR(tail.percentile(0.9995), 5'000'000, 50'000);

    LatencyHistogram exact;
    for (std::uint64_t v : std::initializer_list<std::uint64_t>{3, 7, 7, 9}) exact.record(v);
    EXPECT_EQ(exact.percentile(0.5), 7);
    EXPECT_EQ(exact.percentile(0.25), 3);
}

TEST(LatencyHistogram, MergingEqualsRecordingEverythingInOne) {
    LatencyHistogram a, b, all;
    for (std::uint64_t v = 100; v < 10'000; v += 37) {
        ((v / 37) % 2 == 0 ? a : b).record(v);
        all.record(v);
    }
    a.merge(b);
    EXPECT_EQ(a.count(), all.count());
    EXPECT_EQ(a.minimum(), all.minimum());
    EXPECT_EQ(a.maximum(), all.maximum());
    for (double fraction : {0.1, 0.5, 0.9, 0.999}) EXPECT_EQ(a.percentile(fraction), all.percentile(fraction));

    const LatencyHistogram empty;
    EXPECT_EQ(empty.percentile(0.5), 0);
    EXPECT_EQ(empty.minimum(), 0u);
}

}  // namespace
}  // namespace corvel
