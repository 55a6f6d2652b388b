#include "benchmark/LatencyHistogram.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace corvel {
namespace {

constexpr unsigned subBits = 6;
constexpr std::uint64_t subCount = 1u << subBits;  // 64 steps per power of two: at most 1/64 apart
constexpr std::size_t bucketCount = subCount + (64 - subBits) * subCount;

}  // namespace

LatencyHistogram::LatencyHistogram() : buckets_(bucketCount, 0) {}

std::size_t LatencyHistogram::bucketOf(std::uint64_t value) {
    if (value < subCount) return static_cast<std::size_t>(value);
    const unsigned exponent = 63u - static_cast<unsigned>(std::countl_zero(value));
    const unsigned shift = exponent - subBits;
    const std::uint64_t step = (value >> shift) - subCount;
    return static_cast<std::size_t>(subCount + shift * subCount + step);
}

std::uint64_t LatencyHistogram::bucketLow(std::size_t bucket) {
    if (bucket < subCount) return bucket;
    const std::size_t shift = (bucket - subCount) / subCount;
    const std::uint64_t step = (bucket - subCount) % subCount;
    return (subCount + step) << shift;
}

std::uint64_t LatencyHistogram::bucketWidth(std::size_t bucket) {
    if (bucket < subCount) return 1;
    return std::uint64_t{1} << ((bucket - subCount) / subCount);
}

void LatencyHistogram::record(std::uint64_t nanoseconds) {
    ++buckets_[bucketOf(nanoseconds)];
    ++count_;
    sum_ += nanoseconds;
    minimum_ = std::min(minimum_, nanoseconds);
    maximum_ = std::max(maximum_, nanoseconds);
}

void LatencyHistogram::merge(const LatencyHistogram& other) {
    for (std::size_t i = 0; i < buckets_.size(); ++i) buckets_[i] += other.buckets_[i];
    count_ += other.count_;
    sum_ += other.sum_;
    minimum_ = std::min(minimum_, other.minimum_);
    maximum_ = std::max(maximum_, other.maximum_);
}

double LatencyHistogram::percentile(double fraction) const {
    if (count_ == 0) return 0;
    fraction = std::clamp(fraction, 0.0, 1.0);
    // The rank of the sample asked for, counted from 1 (the nearest-rank definition).
    const auto rank =
        std::max<std::uint64_t>(1, static_cast<std::uint64_t>(std::ceil(fraction * static_cast<double>(count_))));
    std::uint64_t seen = 0;
    for (std::size_t bucket = 0; bucket < buckets_.size(); ++bucket) {
        seen += buckets_[bucket];
        if (seen < rank) continue;
        const double middle = bucket < subCount ? static_cast<double>(bucket)
                                                : static_cast<double>(bucketLow(bucket)) +
                                                      static_cast<double>(bucketWidth(bucket) - 1) / 2.0;
        return std::clamp(middle, static_cast<double>(minimum_), static_cast<double>(maximum_));
    }
    return static_cast<double>(maximum_);
}

}  // namespace corvel
