#include "storage/MountInfoEntry.h"

#include <algorithm>
#include <charconv>

#include "common/Text.h"

namespace corvel {

namespace {

std::vector<std::string_view> fields(std::string_view line) {
    std::vector<std::string_view> result;
    std::size_t position = 0;
    while (position < line.size()) {
        while (position < line.size() && (line[position] == ' ' || line[position] == '\t')) ++position;
        if (position >= line.size()) break;
        std::size_t end = position;
        while (end < line.size() && line[end] != ' ' && line[end] != '\t') ++end;
        result.push_back(line.substr(position, end - position));
        position = end;
    }
    return result;
}

std::optional<int> integer(std::string_view text) {
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool isMajorMinor(std::string_view text) {
    auto colon = text.find(':');
    if (colon == std::string_view::npos) return false;
    return integer(text.substr(0, colon)).has_value() && integer(text.substr(colon + 1)).has_value();
}

// Pieces of `text` between `separator`s, empty ones dropped.
std::vector<std::string_view> pieces(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t end = text.find(separator, start);
        if (end == std::string_view::npos) end = text.size();
        if (end > start) result.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return result;
}

std::vector<std::string> options(std::string_view field) {
    std::vector<std::string> result;
    for (auto option : pieces(field, ',')) result.emplace_back(option);
    return result;
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

}  // namespace

std::string MountInfoEntry::unescape(std::string_view field) {
    std::string result;
    result.reserve(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1]) && isOctal(field[i + 2]) &&
            isOctal(field[i + 3])) {
            int value = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
            if (value <= 0xFF) {
                result.push_back(static_cast<char>(value));
                i += 3;
                continue;
            }
        }
        result.push_back(field[i]);
    }
    return result;
}

bool MountInfoEntry::isReadOnly() const {
    auto hasRO = [](const std::vector<std::string>& list) {
        return std::find(list.begin(), list.end(), "ro") != list.end();
    };
    return hasRO(mountOptions) || hasRO(superOptions);
}

std::optional<MountInfoEntry> MountInfoEntry::parseLine(std::string_view line) {
    auto parts = fields(line);
    // Six fixed fields, any number of optional tags, the "-" separator, then three more.
    auto separator = std::find(parts.begin() + std::min<std::size_t>(parts.size(), 6), parts.end(), "-");
    if (parts.size() < 10 || separator == parts.end() || parts.end() - separator < 4) return std::nullopt;

    auto mountID = integer(parts[0]);
    auto parentID = integer(parts[1]);
    if (!mountID || !parentID || !isMajorMinor(parts[2])) return std::nullopt;

    MountInfoEntry entry;
    entry.mountID = *mountID;
    entry.parentID = *parentID;
    entry.majorMinor = std::string(parts[2]);
    entry.root = unescape(parts[3]);
    entry.mountPoint = unescape(parts[4]);
    entry.mountOptions = options(parts[5]);
    entry.fileSystemType = unescape(separator[1]);
    entry.source = unescape(separator[2]);
    entry.superOptions = options(separator[3]);
    return entry;
}

std::vector<MountInfoEntry> MountInfoEntry::parse(std::string_view text, int* skipped) {
    std::vector<MountInfoEntry> entries;
    int rejected = 0;
    for (auto line : pieces(text, '\n')) {
        if (trim(line).empty()) continue;
        if (auto entry = parseLine(line)) {
            entries.push_back(std::move(*entry));
        } else {
            ++rejected;
        }
    }
    if (skipped) *skipped = rejected;
    return entries;
}

}  // namespace corvel
