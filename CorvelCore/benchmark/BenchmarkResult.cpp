#include "benchmark/BenchmarkResult.h"

namespace corvel {

std::filesystem::path BenchmarkRun::historyFile(const std::filesystem::path& dataFolder) {
    return dataFolder / "benchmark-history.json";
}

}  // namespace corvel
