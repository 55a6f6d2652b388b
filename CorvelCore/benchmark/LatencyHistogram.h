// Latencies of one benchmark job in bounded memory: a log-linear histogram (exact below 64 ns,
// then 64 linear steps per power of two, so any percentile is within about 1 % of the true
// sample). Each worker thread fills its own and the job merges them at the end.
//
//   LatencyHistogram latencies;
//   latencies.record(elapsedNanoseconds);
//   total.merge(latencies);
//   double p99 = total.percentile(0.99);   // nanoseconds; 0 when nothing was recorded
#pragma once

#include <cstdint>
#include <vector>

namespace corvel {

class LatencyHistogram {
public:
    LatencyHistogram();

    void record(std::uint64_t nanoseconds);
    void merge(const LatencyHistogram& other);

    std::uint64_t count() const { return count_; }
    std::uint64_t minimum() const { return count_ == 0 ? 0 : minimum_; }
    std::uint64_t maximum() const { return maximum_; }
    double mean() const { return count_ == 0 ? 0 : static_cast<double>(sum_) / static_cast<double>(count_); }

    // The value below which a `fraction` (0 to 1) of the samples lie: the middle of the bucket
    // that holds that rank, kept within the smallest and largest sample seen.
    double percentile(double fraction) const;

    // Bucket arithmetic, public so that its edges can be tested.
    static std::size_t bucketOf(std::uint64_t nanoseconds);
    static std::uint64_t bucketLow(std::size_t bucket);
    static std::uint64_t bucketWidth(std::size_t bucket);

private:
    std::vector<std::uint64_t> buckets_;
    std::uint64_t count_ = 0;
    std::uint64_t sum_ = 0;
    std::uint64_t minimum_ = UINT64_MAX;
    std::uint64_t maximum_ = 0;
};

}  // namespace corvel
