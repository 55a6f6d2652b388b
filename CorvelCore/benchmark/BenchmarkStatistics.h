// The figures of one job from what its workers counted: throughput, IOPS and latency
// percentiles. Pure, so that the arithmetic is tested apart from any disk.
//
//   auto result = BenchmarkStatistics::summarise(job, operations, seconds, latencies);
#pragma once

#include "benchmark/BenchmarkResult.h"
#include "benchmark/LatencyHistogram.h"

#include <map>
#include <string>
#include <vector>

namespace corvel::BenchmarkStatistics {

// Zero seconds or zero operations give zero rates rather than infinities.
BenchmarkJobResult summarise(const BenchmarkJob& job, std::int64_t operations, double seconds,
                             const LatencyHistogram& latencies);

// The median of each job's figure over several runs, by job name: how the peer comparison and
// a person comparing a disk with itself read repeated runs.
double median(std::vector<double> values);

}  // namespace corvel::BenchmarkStatistics
