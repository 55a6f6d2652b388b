#include "processes/ProcessSampler.h"

#include <algorithm>
#include <thread>
#include <unordered_map>

namespace corvel::ProcessSampler {

std::vector<ProcessSample> combine(const std::vector<ProcessSample>& before, const std::vector<ProcessSample>& after,
                                   std::chrono::nanoseconds elapsed) {
    std::unordered_map<std::int32_t, const ProcessSample*> earlier;
    earlier.reserve(before.size());
    for (const auto& sample : before) earlier.emplace(sample.pid, &sample);
    std::vector<ProcessSample> result = after;
    if (elapsed.count() <= 0) return result;
    for (auto& sample : result) {
        std::int64_t used = sample.cpuNanoseconds;
        if (const auto found = earlier.find(sample.pid);
            found != earlier.end() && found->second->startTime == sample.startTime)
            used -= found->second->cpuNanoseconds;
        sample.cpuPercent = std::max<std::int64_t>(used, 0) * 100.0 / static_cast<double>(elapsed.count());
    }
    return result;
}

std::vector<ProcessSample> measure(ProcessSampling& sampling, std::chrono::milliseconds interval) {
    if (interval.count() <= 0) {
        auto once = sampling.sampleAll();
        sampling.refineMemory(once);
        return once;
    }
    const auto first = sampling.sampleAll();
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(interval);
    const auto second = sampling.sampleAll();
    auto result = combine(first, second, std::chrono::steady_clock::now() - start);
    sampling.refineMemory(result);
    return result;
}

}  // namespace corvel::ProcessSampler
