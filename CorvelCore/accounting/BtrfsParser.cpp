#include "accounting/BtrfsParser.h"

#include "accounting/ListingParseError.h"
#include "common/Text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace corvel::BtrfsParser {
namespace {

// Splits a line into words separated by blanks, remembering where each began so that a last
// field with blanks in it (a path) can be taken whole.
struct Words {
    std::vector<std::string_view> words;
    std::vector<std::size_t> offsets;

    explicit Words(std::string_view line) {
        std::size_t at = 0;
        while (at < line.size()) {
            while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
            if (at == line.size()) break;
            const std::size_t start = at;
            while (at < line.size() && line[at] != ' ' && line[at] != '\t') ++at;
            words.push_back(line.substr(start, at - start));
            offsets.push_back(start);
        }
    }
};

std::optional<std::int64_t> parseInteger(std::string_view text) {
    std::int64_t value = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::vector<std::string_view> contentLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    while (start <= text.size()) {
        const auto end = text.find('\n', start);
        std::string_view line =
            text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (!trim(line).empty()) lines.push_back(line);
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    return lines;
}

[[noreturn]] void unexpected(const char* listing, std::string_view line) {
    throw ListingParseError(listing, "unexpected line '" + std::string(trim(line)) + "'");
}

std::int64_t requireSize(const char* listing, std::string_view token, std::string_view line) {
    auto size = parseSize(token);
    if (!size || *size < 0) unexpected(listing, line);
    return *size;
}

}  // namespace

std::optional<std::int64_t> parseSize(std::string_view token) {
    if (auto whole = parseInteger(token)) return whole;
    static constexpr std::array<std::pair<std::string_view, int>, 7> units{{
        {"EiB", 6},
        {"PiB", 5},
        {"TiB", 4},
        {"GiB", 3},
        {"MiB", 2},
        {"KiB", 1},
        {"B", 0},
    }};
    for (const auto& [unit, power] : units) {
        if (!endsWith(token, unit)) continue;
        const std::string number(token.substr(0, token.size() - unit.size()));
        if (number.empty() || number.find_first_not_of("0123456789.") != std::string::npos) return std::nullopt;
        // The whole number must be read: "1.2.3" is no size, though it begins with one.
        double value = 0;
        const auto [stop, error] = std::from_chars(number.data(), number.data() + number.size(), value);
        if (error != std::errc() || stop != number.data() + number.size()) return std::nullopt;
        const double bytes = std::round(value * std::pow(1024.0, power));
        // 2^63 itself is not representable; everything below it is.
        if (!(bytes < 9223372036854775808.0)) return std::nullopt;
        return static_cast<std::int64_t>(bytes);
    }
    return std::nullopt;
}

int profileCopies(std::string_view profile) {
    const std::string lower = toLower(profile);
    if (lower == "dup" || lower == "raid1" || lower == "raid10") return 2;
    if (lower == "raid1c3") return 3;
    if (lower == "raid1c4") return 4;
    return 1;
}

std::vector<BtrfsSubvolume> parseSubvolumeList(std::string_view text) {
    constexpr const char* listing = "btrfs subvolume list";
    std::vector<BtrfsSubvolume> subvolumes;
    for (const auto line : contentLines(text)) {
        // The path comes last and may hold blanks, so it is everything after the first " path ".
        const auto pathAt = line.find(" path ");
        if (!startsWith(line, "ID ") || pathAt == std::string_view::npos) unexpected(listing, line);
        BtrfsSubvolume subvolume;
        subvolume.path = std::string(line.substr(pathAt + 6));
        const Words fields(line.substr(0, pathAt));
        const auto& words = fields.words;
        bool hasID = false;
        for (std::size_t i = 0; i < words.size(); ++i) {
            const auto word = words[i];
            const bool hasNext = i + 1 < words.size();
            if (word == "ID" && hasNext) {
                auto id = parseInteger(words[++i]);
                if (!id) unexpected(listing, line);
                subvolume.id = *id;
                hasID = true;
            } else if (word == "top" && i + 2 < words.size() && words[i + 1] == "level") {
                auto level = parseInteger(words[i + 2]);
                if (!level) unexpected(listing, line);
                subvolume.topLevel = *level;
                i += 2;
            } else if (word == "otime" && hasNext) {
                // "otime 2026-11-24 17:25:23", or "otime -" when the kernel kept none.
                if (words[i + 1] == "-" || i + 2 >= words.size()) {
                    ++i;
                } else {
                    subvolume.localTime = std::string(words[i + 1]) + " " + std::string(words[i + 2]);
                    i += 2;
                }
            } else if (hasNext) {
                ++i;  // gen, cgen, parent, uuid, parent_uuid, received_uuid: a value we do not need
            }
        }
        if (!hasID || subvolume.path.empty()) unexpected(listing, line);
        subvolumes.push_back(std::move(subvolume));
    }
    return subvolumes;
}

std::vector<BtrfsUsage> parseFilesystemDu(std::string_view text) {
    constexpr const char* listing = "btrfs filesystem du";
    std::vector<BtrfsUsage> usage;
    bool headerSeen = false;
    for (const auto line : contentLines(text)) {
        if (!headerSeen) {
            headerSeen = contains(line, "Total") && contains(line, "Exclusive") && contains(line, "Filename");
            if (!headerSeen) unexpected(listing, line);
            continue;
        }
        const Words fields(line);
        if (fields.words.size() < 4) unexpected(listing, line);
        BtrfsUsage entry;
        entry.totalBytes = requireSize(listing, fields.words[0], line);
        entry.exclusiveBytes = requireSize(listing, fields.words[1], line);
        if (fields.words[2] != "-") entry.setSharedBytes = requireSize(listing, fields.words[2], line);
        entry.path = std::string(line.substr(fields.offsets[3]));
        usage.push_back(std::move(entry));
    }
    if (!headerSeen) throw ListingParseError(listing, "no header line");
    return usage;
}

std::vector<BtrfsSpaceLine> parseFilesystemDf(std::string_view text) {
    constexpr const char* listing = "btrfs filesystem df";
    std::vector<BtrfsSpaceLine> lines;
    for (const auto line : contentLines(text)) {
        if (startsWith(trim(line), "WARNING:")) continue;
        // "Metadata, DUP: total=33554432, used=180224"
        const auto comma = line.find(", ");
        const auto colon = line.find(": total=");
        const auto used = line.find(", used=");
        if (comma == std::string_view::npos || colon == std::string_view::npos || used == std::string_view::npos ||
            !(comma < colon && colon < used))
            unexpected(listing, line);
        BtrfsSpaceLine entry;
        entry.type = std::string(trim(line.substr(0, comma)));
        entry.profile = std::string(trim(line.substr(comma + 2, colon - comma - 2)));
        entry.totalBytes = requireSize(listing, trim(line.substr(colon + 8, used - colon - 8)), line);
        entry.usedBytes = requireSize(listing, trim(line.substr(used + 7)), line);
        if (entry.type.empty() || entry.profile.empty()) unexpected(listing, line);
        lines.push_back(std::move(entry));
    }
    return lines;
}

}  // namespace corvel::BtrfsParser
