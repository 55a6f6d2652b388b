#include "accounting/SnapshotListParser.h"

#include "accounting/ListingParseError.h"
#include "common/Text.h"
#include "storage/DiskutilParseError.h"
#include "storage/PropertyList.h"

#include <cctype>

namespace corvel::SnapshotListParser {
namespace {

constexpr std::string_view apfsSource = "diskutil apfs listSnapshots";
constexpr std::string_view timeMachineSource = "tmutil listlocalsnapshots";
// High Sierra marks snapshots whose data has gone this way after the name.
constexpr std::string_view datalessSuffix = " (dataless)";

bool isDigits(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

std::optional<std::string> stringMember(const PropertyListValue& entry, std::string_view key) {
    const auto* value = entry.find(key);
    if (!value || !value->asString()) return std::nullopt;
    std::string text(trim(*value->asString()));
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<bool> booleanMember(const PropertyListValue& entry, std::string_view key) {
    const auto* value = entry.find(key);
    return value ? value->asBoolean() : std::nullopt;
}

// Snapshot names are plain identifiers ("com.apple.TimeMachine.2026-07-30-071923.local"): no
// spaces, nothing a tool would print as a message.
bool looksLikeSnapshotName(std::string_view name) {
    if (name.empty()) return false;
    for (char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (!std::isalnum(byte) && c != '.' && c != '-' && c != '_') return false;
    }
    return true;
}

}  // namespace

std::optional<std::string> timeMachineLocalTime(std::string_view name) {
    // YYYY-MM-DD-HHMMSS: 17 characters with dashes at 4, 7 and 10.
    constexpr std::size_t length = 17;
    for (std::size_t start = 0; start + length <= name.size(); ++start) {
        const auto part = name.substr(start, length);
        if (part[4] != '-' || part[7] != '-' || part[10] != '-') continue;
        if (!isDigits(part.substr(0, 4)) || !isDigits(part.substr(5, 2)) || !isDigits(part.substr(8, 2)) ||
            !isDigits(part.substr(11, 6)))
            continue;
        // Digits glued to either side mean this is part of a longer number, not a date.
        if (start > 0 && std::isdigit(static_cast<unsigned char>(name[start - 1]))) continue;
        if (start + length < name.size() && std::isdigit(static_cast<unsigned char>(name[start + length]))) continue;
        std::string text(part.substr(0, 10));
        text += ' ';
        text += part.substr(11, 2);
        text += ':';
        text += part.substr(13, 2);
        text += ':';
        text += part.substr(15, 2);
        return text;
    }
    return std::nullopt;
}

std::vector<LocalSnapshot> parseAPFS(std::string_view bytes) {
    const PropertyListValue root = PropertyList::parse(bytes);
    if (!root.isDictionary()) throw DiskutilParseError::notADictionary();
    const auto* list = root.find("Snapshots");
    if (!list || !list->isArray()) throw DiskutilParseError::missingKey("Snapshots");

    std::vector<LocalSnapshot> snapshots;
    for (const auto& entry : *list->asArray()) {
        if (!entry.isDictionary()) continue;
        auto name = stringMember(entry, "SnapshotName");
        if (!name) continue;
        LocalSnapshot snapshot;
        snapshot.name = std::move(*name);
        snapshot.kind = SnapshotKind::apfs;
        snapshot.uuid = stringMember(entry, "SnapshotUUID");
        snapshot.localTime = timeMachineLocalTime(snapshot.name);
        snapshot.isPurgeable = booleanMember(entry, "Purgeable");
        snapshot.limitsContainerShrink = booleanMember(entry, "LimitingContainerShrink");
        snapshot.source = std::string(apfsSource);
        snapshots.push_back(std::move(snapshot));
    }
    return snapshots;
}

std::vector<LocalSnapshot> parseTimeMachine(std::string_view text) {
    std::vector<LocalSnapshot> snapshots;
    for (const auto& rawLine : split(text, '\n')) {
        std::string_view line = trim(rawLine);
        if (line.empty() || endsWith(line, ":")) continue;
        if (endsWith(line, datalessSuffix)) line.remove_suffix(datalessSuffix.size());
        if (!looksLikeSnapshotName(line))
            throw ListingParseError(std::string(timeMachineSource), "unexpected line '" + std::string(line) + "'");
        LocalSnapshot snapshot;
        snapshot.name = std::string(line);
        snapshot.kind = SnapshotKind::apfs;
        snapshot.localTime = timeMachineLocalTime(line);
        snapshot.source = std::string(timeMachineSource);
        snapshots.push_back(std::move(snapshot));
    }
    return snapshots;
}

}  // namespace corvel::SnapshotListParser
