// Measures the running processes over an interval: two readings, each process's CPU share from
// the processor time it used in between. 100% is one core fully busy, so a busy program on a
// many-core machine may show several hundred.
//
//   auto samples = ProcessSampler::measure(local, std::chrono::milliseconds(500));
//   auto shares = ProcessSampler::combine(before, after, std::chrono::milliseconds(500));   // pure
#pragma once

#include "processes/ProcessSampling.h"

#include <chrono>
#include <vector>

namespace corvel::ProcessSampler {

inline constexpr std::chrono::milliseconds defaultInterval{500};

// `after` with cpuPercent set from the processor time used since `before`. A process that started
// in between (a new pid, or a reused pid with another start time) counts all its time.
std::vector<ProcessSample> combine(const std::vector<ProcessSample>& before, const std::vector<ProcessSample>& after,
                                   std::chrono::nanoseconds elapsed);

// Two readings `interval` apart (measured on the steady clock). A zero interval is one reading
// with every cpuPercent at 0, for callers that need no CPU figures. The exact memory figures
// (ProcessSampling::refineMemory) are read once, for the result only.
std::vector<ProcessSample> measure(ProcessSampling& sampling, std::chrono::milliseconds interval = defaultInterval);

}  // namespace corvel::ProcessSampler
