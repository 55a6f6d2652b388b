#include "accounting/SwapArea.h"

#include "accounting/ListingParseError.h"
#include "common/Text.h"
#include "storage/MountInfoEntry.h"

#include <charconv>
#include <optional>

namespace corvel {
namespace {

constexpr const char* listing = "/proc/swaps";
// A KiB count beyond this would not fit in bytes; no swap area comes near it.
constexpr std::int64_t largestKiB = std::int64_t{1} << 52;

std::optional<std::int64_t> kibibytes(std::string_view text) {
    std::int64_t value = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || value < 0 || value > largestKiB) return std::nullopt;
    return value * 1024;
}

}  // namespace

std::vector<SwapArea> SwapArea::parseList(std::string_view text) {
    std::vector<SwapArea> areas;
    bool headerSeen = false;
    for (const auto& rawLine : split(text, '\n')) {
        const std::string_view line = trim(rawLine);
        if (line.empty()) continue;
        if (!headerSeen) {
            headerSeen = startsWith(line, "Filename");
            if (!headerSeen) throw ListingParseError(listing, "no header line");
            continue;
        }
        // The kernel escapes blanks in the path, so fields are separated by blanks alone.
        std::vector<std::string> fields;
        for (const auto& piece : split(std::string(line), ' ')) {
            for (const auto& field : split(piece, '\t'))
                if (!field.empty()) fields.push_back(field);
        }
        if (fields.size() < 4) throw ListingParseError(listing, "unexpected line '" + std::string(line) + "'");
        const auto size = kibibytes(fields[2]);
        const auto used = kibibytes(fields[3]);
        if (!size || !used) throw ListingParseError(listing, "unexpected line '" + std::string(line) + "'");
        areas.push_back({MountInfoEntry::unescape(fields[0]), fields[1], *size, *used});
    }
    if (!headerSeen) throw ListingParseError(listing, "no header line");
    return areas;
}

}  // namespace corvel
