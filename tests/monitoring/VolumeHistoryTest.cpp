#include "monitoring/VolumeHistory.h"

#include "monitoring/CapacityForecast.h"
#include "monitoring/MonitoringSamples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::SizeIs;
using testing::sample;

constexpr double oneDay = CapacityForecast::standardMinimumSpan;

TEST(VolumeHistory, GroupsPerVolumeWithTrendAndForecast) {
    auto renamed = sample("A", 2, 10);
    renamed.volumeName = "Renamed";
    const auto volumes =
        VolumeHistory::group({sample("A", 0, 12), sample("B", 0, 5), sample("A", 1, 11), renamed}, oneDay);
    ASSERT_THAT(volumes, ElementsAre(Field(&VolumeHistory::volumeID, "A"), Field(&VolumeHistory::volumeID, "B")));
    EXPECT_EQ(volumes[0].volumeName, "Renamed");
    EXPECT_THAT(volumes[0].samples, SizeIs(3));
    EXPECT_NEAR(*volumes[0].trendBytesPerDay, -1e9, 1);
    EXPECT_NEAR(*volumes[0].daysUntilFull, 10, 1e-9);
    EXPECT_EQ(volumes[0].forecastText(oneDay), "fills in about 10 days at the current trend");
    EXPECT_FALSE(volumes[1].daysUntilFull);
}

TEST(VolumeHistory, SaysWhyThereIsNoForecast) {
    const auto young = VolumeHistory::group({sample("A", 0, 12), sample("A", 0.25, 11)}, oneDay).front();
    EXPECT_EQ(young.forecastText(oneDay), "no forecast before 24 hours of samples (6 hours so far)");
    const auto growing = VolumeHistory::group({sample("A", 0, 10), sample("A", 2, 11)}, oneDay).front();
    EXPECT_EQ(growing.forecastText(oneDay), "no forecast: free space is not shrinking");
}

TEST(Sparkline, ScalesAndAveragesIntoTheWidth) {
    EXPECT_EQ(Sparkline::text({0, 1, 2, 3, 4, 5, 6, 7}, 8), "▁▂▃▄▅▆▇█");
    EXPECT_EQ(Sparkline::text({0, 0, 7, 7}, 2), "▁█");     // pairs averaged
    EXPECT_EQ(Sparkline::text({5, 5, 5}, 10), "▄▄▄");      // flat, and never wider than the values
    EXPECT_EQ(Sparkline::text({}, 10), "");
}

}  // namespace
}  // namespace corvel
