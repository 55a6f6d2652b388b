// How much of a volume its local snapshots hold, from its account, and whether that is enough to
// mention: status shows a line for each volume where snapshots hold more than 5 % of it, and the
// insights turn the same figures into "Local snapshots hold …". Only sized snapshots count:
// an unknown size (APFS, a failed listing) never becomes a share.
//
//   if (auto share = SnapshotShare::of(account); share && share->isNoticeable()) { … }
#pragma once

#include "accounting/LocalSnapshot.h"
#include "accounting/StorageAccount.h"
#include "common/Json.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace corvel {

struct SnapshotShare {
    std::string mountPoint;
    SnapshotKind kind = SnapshotKind::apfs;
    std::size_t count = 0;
    std::int64_t bytes = 0;          // what the snapshots alone hold
    std::int64_t capacityBytes = 0;  // of the volume (or its container)

    // Strictly more than one twentieth of the capacity, in exact integers.
    bool isNoticeable() const;
    double fraction() const;

    bool operator==(const SnapshotShare&) const = default;

    // Absent when the account has no snapshot row with a known, positive size.
    static std::optional<SnapshotShare> of(const StorageAccount& account);
};
CORVEL_JSON_RECORD(SnapshotShare, mountPoint, kind, count, bytes, capacityBytes)

}  // namespace corvel
