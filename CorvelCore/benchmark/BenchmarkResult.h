// What a benchmark run measured: one result per job and the run around them, as printed and as
// kept in the history ("benchmark-history.json" in the data folder, capped).
//
//   BenchmarkJobResult r = BenchmarkStatistics::summarise(job, operations, seconds, latencies);
//   r.megabytesPerSecond, r.iops, r.latencyP99Micros
//   JSONHistory<BenchmarkRun> history(BenchmarkRun::historyFile(dataFolder), BenchmarkRun::historyLimit);
#pragma once

#include "benchmark/BenchmarkJob.h"
#include "common/ISO8601.h"
#include "common/Json.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace corvel {

struct BenchmarkJobResult {
    BenchmarkJob job;
    std::string name;  // job.name(), kept so that the history reads on its own
    std::int64_t operations = 0;
    std::int64_t bytesMoved = 0;    // operations × block size
    double seconds = 0;             // from the first request to the last (and the final fsync of writes)
    double megabytesPerSecond = 0;  // decimal megabytes, as disk reviews count them
    double iops = 0;
    double latencyP50Micros = 0;
    double latencyP99Micros = 0;
    double latencyP999Micros = 0;

    bool operator==(const BenchmarkJobResult&) const = default;
};
CORVEL_JSON_RECORD(BenchmarkJobResult, job, name, operations, bytesMoved, seconds, megabytesPerSecond, iops,
                   latencyP50Micros, latencyP99Micros, latencyP999Micros)

struct BenchmarkRun {
    TimePoint date;
    std::string folder;      // where the temporary file was made
    std::string mountPoint;  // the volume it sits on: what the history groups by
    std::string fileSystemType;
    std::int64_t fileBytes = 0;
    double secondsPerJob = 0;
    bool isCacheBypassed = false;  // false when the file system refused direct I/O
    bool isInterrupted = false;
    std::vector<std::string> notes;
    std::vector<BenchmarkJobResult> results;

    bool operator==(const BenchmarkRun&) const = default;

    static constexpr std::size_t historyLimit = 200;
    static std::filesystem::path historyFile(const std::filesystem::path& dataFolder);
};
CORVEL_JSON_RECORD(BenchmarkRun, date, folder, mountPoint, fileSystemType, fileBytes, secondsPerJob, isCacheBypassed,
                   isInterrupted, notes, results)

}  // namespace corvel
