#include "benchmark/BenchmarkJob.h"

namespace corvel {

bool isWrite(IOPattern pattern) {
    return pattern == IOPattern::sequentialWrite || pattern == IOPattern::randomWrite;
}

bool isRandom(IOPattern pattern) {
    return pattern == IOPattern::randomRead || pattern == IOPattern::randomWrite;
}

std::string BenchmarkJob::name() const {
    constexpr std::int64_t mebibyte = 1 << 20;
    const std::string size = blockBytes % mebibyte == 0 ? std::to_string(blockBytes / mebibyte) + "M"
                                                        : std::to_string(blockBytes / 1024) + "K";
    return std::string(isRandom(pattern) ? "RND" : "SEQ") + size + " Q" + std::to_string(queueDepth) +
           (isWrite(pattern) ? " write" : " read");
}

std::vector<BenchmarkJob> BenchmarkJob::standardSet() {
    constexpr std::int64_t sequentialBlock = 1 << 20;
    constexpr std::int64_t randomBlock = 4096;
    return {
        {IOPattern::sequentialWrite, sequentialBlock, 8}, {IOPattern::sequentialRead, sequentialBlock, 8},
        {IOPattern::sequentialWrite, sequentialBlock, 1}, {IOPattern::sequentialRead, sequentialBlock, 1},
        {IOPattern::randomRead, randomBlock, 32},         {IOPattern::randomWrite, randomBlock, 32},
        {IOPattern::randomRead, randomBlock, 1},          {IOPattern::randomWrite, randomBlock, 1},
    };
}

}  // namespace corvel
