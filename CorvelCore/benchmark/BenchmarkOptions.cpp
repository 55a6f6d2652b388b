#include "benchmark/BenchmarkOptions.h"

#include "common/ByteFormat.h"

#include <fmt/format.h>
#include <array>
#include <cctype>
#include <charconv>
#include <limits>
#include <utility>

namespace corvel {

std::optional<std::int64_t> BenchmarkOptions::parseSize(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end == text.data() || number <= 0) return std::nullopt;
    std::string unit;
    for (const char* c = end; c != text.data() + text.size(); ++c)
        unit += static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
    static constexpr std::array<std::pair<std::string_view, std::int64_t>, 13> units{{
        {"", 1},
        {"b", 1},
        {"k", 1LL << 10},
        {"kib", 1LL << 10},
        {"m", 1LL << 20},
        {"mib", 1LL << 20},
        {"g", 1LL << 30},
        {"gib", 1LL << 30},
        {"t", 1LL << 40},
        {"tib", 1LL << 40},
        {"kb", 1000LL},
        {"mb", 1000LL * 1000},
        {"gb", 1000LL * 1000 * 1000},
    }};
    for (const auto& [name, factor] : units) {
        if (unit != name) continue;
        if (number > std::numeric_limits<std::int64_t>::max() / factor) return std::nullopt;
        return number * factor;
    }
    return std::nullopt;
}

std::optional<std::string> BenchmarkOptions::problem() const {
    if (folder.empty()) return "no folder to measure";
    if (fileBytes < smallestFile)
        return fmt::format("file size {} is too small: at least 1 MiB", ByteFormat::string(fileBytes));
    if (!(secondsPerJob > 0) || secondsPerJob > longestJob)
        return fmt::format("{} seconds per test is out of range: more than 0 and at most {}", secondsPerJob,
                           longestJob);
    if (!(pauseSeconds >= 0)) return "the pause between tests cannot be negative";
    return std::nullopt;
}

std::int64_t BenchmarkOptions::usableFileBytes() const {
    return fileBytes / smallestFile * smallestFile;
}

}  // namespace corvel
