// What a person asks of a benchmark: where, how large a file, how long each job runs. Sizes are
// typed the way storage people write them ("1GiB", "512MiB", "256M" = binary units, "2GB" =
// decimal); bad text gets one line naming it.
//
//   BenchmarkOptions options{.folder = "/Volumes/Fast", .fileBytes = *BenchmarkOptions::parseSize("4GiB")};
//   if (auto problem = options.problem()) fail(*problem);
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

struct BenchmarkOptions {
    std::string folder;
    std::int64_t fileBytes = std::int64_t{1} << 30;
    double secondsPerJob = 5;
    double pauseSeconds = 1;  // between jobs, so that one job's write-back does not land in the next
    bool allowNetwork = false;

    static constexpr std::int64_t smallestFile = std::int64_t{1} << 20;
    static constexpr double longestJob = 60;

    // Absent when the text is not a positive whole number with an optional unit.
    static std::optional<std::int64_t> parseSize(std::string_view text);
    // Why these options cannot run, one line; absent when they can. The file must hold at least
    // one sequential block; a job lasts more than nothing and at most a minute.
    std::optional<std::string> problem() const;
    // The file size actually used: whole 1 MiB blocks, so every sequential request is full.
    std::int64_t usableFileBytes() const;
};

}  // namespace corvel
