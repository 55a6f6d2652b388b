// One running process as one reading of the system saw it: who runs it, which program, how much
// processor time it has used so far and how much memory it holds. Two readings an interval apart
// give its CPU share (ProcessSampler); many of them become the groups people see
// (ProcessGrouping).
//
//   for (const auto& sample : ProcessSampler::measure(local, 500ms))
//       print(sample.name, sample.cpuPercent, ByteFormat::string(sample.memoryBytes));
#pragma once

#include "common/Json.h"
#include "processes/MemoryKind.h"

#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct ProcessSample {
    std::int32_t pid = 0;
    std::int32_t parentPid = 0;
    std::uint32_t uid = 0;                      // the real user id: whose process it is, who may signal it
    std::string name;                           // the system's short name (truncated to 15 bytes on Linux)
    std::optional<std::string> executablePath;  // absent when the system would not say
    bool isKernelThread = false;
    // When the process started, in the system's own units: with the pid it names one process, so
    // that a pid reused by a newer process is never mistaken for the one sampled.
    std::uint64_t startTime = 0;
    std::int64_t cpuNanoseconds = 0;  // user and system time used so far
    double cpuPercent = 0;            // over the sampling interval; 100 is one core fully busy
    std::int64_t memoryBytes = 0;
    MemoryKind memoryKind = MemoryKind::resident;

    bool operator==(const ProcessSample&) const = default;
};

CORVEL_JSON_RECORD(ProcessSample, pid, parentPid, uid, name, executablePath, isKernelThread, startTime, cpuNanoseconds,
                   cpuPercent, memoryBytes, memoryKind)

}  // namespace corvel
