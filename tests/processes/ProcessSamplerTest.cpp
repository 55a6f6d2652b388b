#include "processes/ProcessSampler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::Field;

ProcessSample sampleOf(std::int32_t pid, std::uint64_t start, std::int64_t cpuNanoseconds) {
    ProcessSample sample;
    sample.pid = pid;
    sample.startTime = start;
    sample.cpuNanoseconds = cpuNanoseconds;
    return sample;
}

auto share(std::int32_t pid, double percent) {
    return AllOf(Field(&ProcessSample::pid, pid), Field(&ProcessSample::cpuPercent, DoubleNear(percent, 1e-9)));
}

TEST(ProcessSampler, CpuShareIsTimeUsedOverTheInterval) {
    const std::vector<ProcessSample> before{sampleOf(10, 1, 1'000'000'000), sampleOf(11, 5, 400'000'000),
                                            sampleOf(12, 7, 50'000'000)};
    const std::vector<ProcessSample> after{
        sampleOf(10, 1, 1'250'000'000),  // a quarter of the half second: 50%
        sampleOf(11, 9, 100'000'000),    // the pid now names a newer process: all of its time counts
        sampleOf(12, 7, 1'050'000'000),  // two cores busy for the whole interval
        sampleOf(13, 3, 5'000'000),      // started in between
    };
    EXPECT_THAT(ProcessSampler::combine(before, after, std::chrono::milliseconds(500)),
                ElementsAre(share(10, 50), share(11, 20), share(12, 200), share(13, 1)));
}

TEST(ProcessSampler, ClockTroubleNeverGivesNegativeOrEndlessShares) {
    // A counter that went backwards (it never should) reads as idle; no elapsed time, no shares.
    EXPECT_THAT(ProcessSampler::combine({sampleOf(10, 1, 900)}, {sampleOf(10, 1, 100)}, std::chrono::seconds(1)),
                ElementsAre(share(10, 0)));
    EXPECT_THAT(ProcessSampler::combine({}, {sampleOf(10, 1, 100)}, std::chrono::nanoseconds(0)),
                ElementsAre(share(10, 0)));
}

class CountingSampling : public ProcessSampling {
public:
    std::vector<ProcessSample> sampleAll() override {
        ++calls;
        return {sampleOf(10, 1, calls * 10'000'000)};
    }
    // Marks what it refines with the number of the reading it came from.
    void refineMemory(std::vector<ProcessSample>& samples) override {
        ++refinements;
        for (auto& sample : samples) {
            sample.memoryBytes = calls;
            sample.memoryKind = MemoryKind::proportional;
        }
    }
    std::int64_t calls = 0;
    std::int64_t refinements = 0;
};

auto refinedFrom(std::int64_t reading) {
    return AllOf(Field(&ProcessSample::memoryBytes, reading),
                 Field(&ProcessSample::memoryKind, MemoryKind::proportional));
}

TEST(ProcessSampler, MeasureReadsTwiceAnIntervalApartOrOnceWithoutOne) {
    CountingSampling sampling;
    const auto once = ProcessSampler::measure(sampling, std::chrono::milliseconds(0));
    EXPECT_EQ(sampling.calls, 1);
    EXPECT_EQ(sampling.refinements, 1);
    EXPECT_THAT(once, ElementsAre(AllOf(share(10, 0), refinedFrom(1))));

    sampling.calls = 0;
    sampling.refinements = 0;
    const auto measured = ProcessSampler::measure(sampling, std::chrono::milliseconds(20));
    EXPECT_EQ(sampling.calls, 2);
    // The exact memory is paid for once, on the reading that is returned.
    EXPECT_EQ(sampling.refinements, 1);
    EXPECT_THAT(measured, ElementsAre(refinedFrom(2)));
    ASSERT_EQ(measured.size(), 1u);
    // 10 ms of processor time over at least 20 ms of waiting.
    EXPECT_GT(measured[0].cpuPercent, 0);
    EXPECT_LE(measured[0].cpuPercent, 50);
}

}  // namespace
}  // namespace corvel
