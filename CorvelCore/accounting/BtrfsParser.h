// Decodes what the btrfs tool prints about one file system: its subvolumes and snapshots
// (`btrfs subvolume list`, `-s` for snapshots only), the space each path references
// (`btrfs filesystem du -s --raw`) and how its chunks are used (`btrfs filesystem df -b`). Pure functions over
// text; sizes are read in bytes and also in the tool's human units ("4.41GiB"), so samples
// printed without --raw decode too. Output that is not such a listing throws ListingParseError.
//
//   auto subvolumes = BtrfsParser::parseSubvolumeList(run({"subvolume", "list", "-s", "/"}));
//   auto usage = BtrfsParser::parseFilesystemDu(run({"filesystem", "du", "-s", "--raw", "/.snapshots/1/snapshot"}));
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// One line of `btrfs subvolume list`.
struct BtrfsSubvolume {
    std::int64_t id = 0;
    std::int64_t topLevel = 0;
    std::string path;                      // from the file system's top level: "@home", "@/.snapshots/1/snapshot"
    std::optional<std::string> localTime;  // creation time as the machine's clock read it (`-s` prints it)

    bool operator==(const BtrfsSubvolume&) const = default;
};
CORVEL_JSON_RECORD(BtrfsSubvolume, id, topLevel, path, localTime)

// One line of `btrfs filesystem du -s`: the file extents below a path, all of them, those no
// other file references, and those shared within the path's own set.
struct BtrfsUsage {
    std::string path;
    std::int64_t totalBytes = 0;
    std::int64_t exclusiveBytes = 0;
    std::optional<std::int64_t> setSharedBytes;

    bool operator==(const BtrfsUsage&) const = default;
};
CORVEL_JSON_RECORD(BtrfsUsage, path, totalBytes, exclusiveBytes, setSharedBytes)

// One line of `btrfs filesystem df`: a chunk type ("Data", "Metadata", "System", "GlobalReserve")
// with its profile ("single", "DUP", "RAID1", …).
struct BtrfsSpaceLine {
    std::string type;
    std::string profile;
    std::int64_t totalBytes = 0;
    std::int64_t usedBytes = 0;

    bool operator==(const BtrfsSpaceLine&) const = default;
};
CORVEL_JSON_RECORD(BtrfsSpaceLine, type, profile, totalBytes, usedBytes)

namespace BtrfsParser {

// Empty text is a file system without subvolumes.
std::vector<BtrfsSubvolume> parseSubvolumeList(std::string_view text);
// The header line ("Total   Exclusive  Set shared  Filename") is required.
std::vector<BtrfsUsage> parseFilesystemDu(std::string_view text);
// "WARNING:" lines (mixed profiles during a conversion) are skipped.
std::vector<BtrfsSpaceLine> parseFilesystemDf(std::string_view text);

// "14680064" or "4.41GiB" (B, KiB … EiB) in bytes; absent for anything else, including values
// beyond a signed 64-bit count.
std::optional<std::int64_t> parseSize(std::string_view token);

// How many copies of each block a profile keeps: 2 for DUP, RAID1 and RAID10, 3 and 4 for
// RAID1C3 and RAID1C4, else 1 (parity profiles are counted as one copy).
int profileCopies(std::string_view profile);

}  // namespace BtrfsParser
}  // namespace corvel
