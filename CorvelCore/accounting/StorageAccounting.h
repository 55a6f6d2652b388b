// The arithmetic of an account, kept apart from the listings it reads so that every boundary can
// be tested with plain numbers: the remainder that closes the split, btrfs metadata counted with
// its copies, and which mount a path or a subvolume belongs to. Pure functions; nothing throws,
// sums too large for 64 bits come back absent instead.
//
//   auto rest = StorageAccounting::remainder(account.usedBytes, account.rows);
//   if (rest) account.rows.push_back(*rest);   // notExplained, or countedTwice when negative
#pragma once

#include "accounting/BtrfsParser.h"
#include "accounting/StorageAccount.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel::StorageAccounting {

// Sizes that may be unknown added up: absent when any is unknown, negative or the sum overflows.
std::optional<std::int64_t> sum(const std::vector<std::optional<std::int64_t>>& sizes);

// used − the known parts. A positive or zero rest is notExplained; a negative one (parts measured
// at different moments, or a scan that also walked a snapshot) is countedTwice with its magnitude.
// Unknown parts are left out, so their share sits in the rest. Absent when the parts cannot be
// added in 64 bits.
std::optional<AccountingRow> remainder(std::int64_t usedBytes, const std::vector<AccountingRow>& parts);

// Metadata and System chunks in use times the copies their profile keeps. GlobalReserve is set
// aside within the metadata chunks and is not counted a second time. Absent on overflow.
std::optional<std::int64_t> btrfsMetadataBytes(const std::vector<BtrfsSpaceLine>& lines);

// The deepest of `mountPoints` that holds `path`, which is where the path's blocks live.
std::optional<std::string> mountPointOf(std::string_view path, const std::vector<std::string>& mountPoints);

// Where a subvolume (its path from the top level, "@/.snapshots/1/snapshot") shows below a mount
// of the subvolume `mountRoot` ("/" for the top level, "/@"). Absent when it lies outside the
// mounted subvolume and so cannot be reached from here.
std::optional<std::string> subvolumeLocation(std::string_view mountPoint, std::string_view mountRoot,
                                             std::string_view subvolumePath);

}  // namespace corvel::StorageAccounting
