#include "updates/SemVer.h"

#include "common/Text.h"

#include <algorithm>
#include <limits>

namespace corvel::SemVer {
namespace {

std::int64_t pieceValue(std::string_view piece) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    std::int64_t value = 0;
    for (const char c : piece) {
        if (c < '0' || c > '9') return 0;
        const int digit = c - '0';
        // Saturate rather than wrap: an absurdly long number still sorts above every real one.
        if (value > (largest - digit) / 10) return largest;
        value = value * 10 + digit;
    }
    return value;
}

}  // namespace

std::vector<std::int64_t> parts(std::string_view text) {
    text = trim(text);
    if (!text.empty() && (text.front() == 'v' || text.front() == 'V')) text.remove_prefix(1);
    text = text.substr(0, text.find('-'));
    std::vector<std::int64_t> result;
    for (const auto& piece : split(text, '.'))
        if (!piece.empty()) result.push_back(pieceValue(piece));
    return result;
}

VersionOrder compare(std::string_view a, std::string_view b) {
    const auto left = parts(a);
    const auto right = parts(b);
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
        const std::int64_t x = i < left.size() ? left[i] : 0;
        const std::int64_t y = i < right.size() ? right[i] : 0;
        if (x < y) return VersionOrder::ascending;
        if (x > y) return VersionOrder::descending;
    }
    return VersionOrder::same;
}

}  // namespace corvel::SemVer
