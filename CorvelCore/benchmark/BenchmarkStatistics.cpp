#include "benchmark/BenchmarkStatistics.h"

#include "common/CheckedArithmetic.h"

#include <algorithm>

namespace corvel::BenchmarkStatistics {

BenchmarkJobResult summarise(const BenchmarkJob& job, std::int64_t operations, double seconds,
                             const LatencyHistogram& latencies) {
    BenchmarkJobResult result;
    result.job = job;
    result.name = job.name();
    result.operations = operations;
    result.bytesMoved = checkedMultiply(operations, job.blockBytes);
    result.seconds = seconds;
    if (seconds > 0 && operations > 0) {
        result.iops = static_cast<double>(operations) / seconds;
        result.megabytesPerSecond = static_cast<double>(result.bytesMoved) / seconds / 1e6;
    }
    result.latencyP50Micros = latencies.percentile(0.50) / 1000.0;
    result.latencyP99Micros = latencies.percentile(0.99) / 1000.0;
    result.latencyP999Micros = latencies.percentile(0.999) / 1000.0;
    return result;
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

}  // namespace corvel::BenchmarkStatistics
