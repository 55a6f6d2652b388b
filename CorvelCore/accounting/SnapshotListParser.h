// Decodes the two macOS listings of local snapshots: the disk tool's property list and Time
// Machine's plain list of names. Pure functions over bytes, lenient about what they do not need
// (an entry without a name is skipped, unknown keys are ignored) and strict about the shape, so
// that output that is not a listing becomes a warning rather than an empty list.
//
//   auto snapshots = SnapshotListParser::parseAPFS(client.listSnapshots("disk3s5"));
//   auto named = SnapshotListParser::parseTimeMachine(client.listTimeMachineSnapshots());
#pragma once

#include "accounting/LocalSnapshot.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel::SnapshotListParser {

// `diskutil apfs listSnapshots -plist VOLUME`. Throws PropertyListError for bytes that are no
// property list and DiskutilParseError when the root is not a dictionary or has no "Snapshots"
// list. An empty list is a volume without snapshots.
std::vector<LocalSnapshot> parseAPFS(std::string_view bytes);

// `tmutil listlocalsnapshots /`: one name per line, after an optional header line ending in ":"
// ("Snapshots for volume group containing disk /:"). Throws ListingParseError on any other line.
std::vector<LocalSnapshot> parseTimeMachine(std::string_view text);

// "2026-07-30 07:19:23" for a name carrying "2026-07-30-071923" (Time Machine's names, in the
// Mac's local time); absent when the name carries no such date.
std::optional<std::string> timeMachineLocalTime(std::string_view name);

}  // namespace corvel::SnapshotListParser
