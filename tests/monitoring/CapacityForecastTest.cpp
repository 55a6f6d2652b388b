#include "monitoring/CapacityForecast.h"

#include "monitoring/MonitoringSamples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace corvel {
namespace {

using testing::sample;

constexpr double oneDay = CapacityForecast::standardMinimumSpan;

struct ForecastCase {
    const char* name;
    std::vector<VolumeSample> samples;
    double minimumSpan;
    std::optional<double> days;
};

TEST(CapacityForecast, DaysUntilFull) {
    const std::vector<ForecastCase> cases{
        {"losing 1 GB a day with 10 GB left", {sample("A", 0, 12), sample("A", 1, 11), sample("A", 2, 10)}, oneDay, 10.0},
        {"the same, samples out of order", {sample("A", 2, 10), sample("A", 0, 12), sample("A", 1, 11)}, oneDay, 10.0},
        {"least squares through noise", {sample("A", 0, 20), sample("A", 1, 17), sample("A", 2, 16)}, oneDay, 16.0 / 2.0},
        {"flat", {sample("A", 0, 10), sample("A", 1, 10), sample("A", 3, 10)}, oneDay, std::nullopt},
        {"growing", {sample("A", 0, 10), sample("A", 1, 11), sample("A", 2, 12)}, oneDay, std::nullopt},
        {"one sample", {sample("A", 0, 10)}, 0, std::nullopt},
        {"no samples", {}, 0, std::nullopt},
        {"two samples closer than the span", {sample("A", 0, 12), sample("A", 0.5, 10)}, oneDay, std::nullopt},
        {"two samples exactly the span apart", {sample("A", 0, 12), sample("A", 1, 10)}, oneDay, 5.0},
        {"all at one instant", {sample("A", 1, 12), sample("A", 1, 10)}, 0, std::nullopt},
    };
    for (const auto& c : cases) {
        const auto days = CapacityForecast::daysUntilFull(c.samples, c.minimumSpan);
        if (!c.days) {
            EXPECT_FALSE(days) << c.name << ": " << *days;
        } else {
            ASSERT_TRUE(days) << c.name;
            EXPECT_NEAR(*days, *c.days, 1e-6) << c.name;
        }
    }
}

TEST(CapacityForecast, TrendIsTheSlopePerDay) {
    EXPECT_NEAR(*CapacityForecast::trendBytesPerDay({sample("A", 0, 12), sample("A", 2, 10)}), -1e9, 1);
    EXPECT_NEAR(*CapacityForecast::trendBytesPerDay({sample("A", 0, 10), sample("A", 0.5, 11)}), 2e9, 1);
    EXPECT_FALSE(CapacityForecast::trendBytesPerDay({sample("A", 0, 10)}));
}

TEST(CapacityForecast, DescribesDaysInWords) {
    EXPECT_EQ(CapacityForecast::describe(12.4), "fills in about 12 days at the current trend");
    EXPECT_EQ(CapacityForecast::describe(1.2), "fills in about 1 day at the current trend");
    EXPECT_EQ(CapacityForecast::describe(0.3), "fills in less than a day at the current trend");
    EXPECT_EQ(CapacityForecast::describeBriefly(6.6), "full in about 7 days");
    EXPECT_EQ(CapacityForecast::describeBriefly(0.9), "full within a day");
}

}  // namespace
}  // namespace corvel
