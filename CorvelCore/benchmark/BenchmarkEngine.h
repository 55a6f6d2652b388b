// Runs the benchmark on one temporary file: writes the whole file with incompressible data
// first (so that no read ever touches a block that was never written), then each job for a fixed
// time with one thread per request in flight, pausing between jobs. Write jobs end with an fsync
// that counts in their time. Cancellation is polled before every request; a cancelled run
// returns the jobs finished so far. The file is closed, and so gone, on every way out.
//
//   BenchmarkProgress progress;
//   BenchmarkRun run = BenchmarkEngine::run(options, facts, BenchmarkJob::standardSet(), progress,
//                                           isCancelled, machine.now());   // throws BenchmarkError
#pragma once

#include "benchmark/BenchmarkOptions.h"
#include "benchmark/BenchmarkPreflight.h"
#include "benchmark/BenchmarkResult.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

namespace corvel {

// Where a run stands, written by the engine and polled by a front end.
struct BenchmarkProgress {
    std::atomic<int> jobIndex{-1};  // -1 while the file is being written
    std::atomic<int> jobCount{0};
    std::atomic<std::int64_t> preparedBytes{0};
    std::atomic<std::int64_t> fileBytes{0};
};

namespace BenchmarkEngine {

BenchmarkRun run(const BenchmarkOptions& options, const BenchmarkVolumeFacts& facts,
                 const std::vector<BenchmarkJob>& jobs, BenchmarkProgress& progress,
                 const std::function<bool()>& isCancelled, TimePoint date);

}  // namespace BenchmarkEngine
}  // namespace corvel
