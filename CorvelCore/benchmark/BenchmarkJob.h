// One measurement of a benchmark run: what is done to the file (sequential or random, read or
// write), in blocks of what size, with how many requests in flight. The standard set is what disk
// reviews publish, so a person can hold our figures against theirs.
//
//   for (const BenchmarkJob& job : BenchmarkJob::standardSet())
//       show(job.name());   // "SEQ1M Q8 write", ..., "RND4K Q1 write"
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvel {

enum class IOPattern { sequentialRead, sequentialWrite, randomRead, randomWrite };

template <>
struct EnumTable<IOPattern> {
    static constexpr std::array<EnumEntry<IOPattern>, 4> entries{{
        {IOPattern::sequentialRead, "sequentialRead", "Sequential read"},
        {IOPattern::sequentialWrite, "sequentialWrite", "Sequential write"},
        {IOPattern::randomRead, "randomRead", "Random read"},
        {IOPattern::randomWrite, "randomWrite", "Random write"},
    }};
};
CORVEL_ENUM_JSON(IOPattern)

bool isWrite(IOPattern pattern);
bool isRandom(IOPattern pattern);

struct BenchmarkJob {
    IOPattern pattern = IOPattern::sequentialRead;
    std::int64_t blockBytes = 0;
    int queueDepth = 1;  // requests in flight: one thread per request, each issuing pread/pwrite

    bool operator==(const BenchmarkJob&) const = default;

    // "SEQ1M Q8 read", "RND4K Q32 write": the short names disk reviews use.
    std::string name() const;

    // Sequential 1 MiB write and read at depth 8 then 1; random 4 KiB read and write at 32 then 1.
    static std::vector<BenchmarkJob> standardSet();
};
CORVEL_JSON_RECORD(BenchmarkJob, pattern, blockBytes, queueDepth)

}  // namespace corvel
