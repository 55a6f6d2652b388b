// One local snapshot of a volume: an APFS snapshot (Time Machine's local ones among them), a btrfs
// snapshot subvolume or a classic LVM snapshot. Snapshots keep the blocks of files that were
// changed or deleted after they were taken, which is space no folder walk can see. Velmora only
// lists them; each kind names the platform's own way of thinning them.
//
//   LocalSnapshot snapshot{"com.apple.TimeMachine.2026-07-30-071923.local", SnapshotKind::apfs};
//   snapshot.localTime = "2026-07-30 07:19:23";
//   thinningCommand(snapshot.kind)   // "tmutil thinlocalsnapshots / …"
#pragma once

#include "common/EnumTable.h"
#include "common/Json.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

enum class SnapshotKind { apfs, btrfs, lvm };

template <>
struct EnumTable<SnapshotKind> {
    static constexpr std::array<EnumEntry<SnapshotKind>, 3> entries{{
        {SnapshotKind::apfs, "apfs", "APFS snapshot"},
        {SnapshotKind::btrfs, "btrfs", "btrfs snapshot"},
        {SnapshotKind::lvm, "lvm", "LVM snapshot"},
    }};
};
CORVEL_ENUM_JSON(SnapshotKind)

// The program a person thins this kind of snapshot with ("tmutil"), and the command in full with
// placeholders in capitals. Velmora itself never runs either.
std::string_view thinningTool(SnapshotKind kind);
std::string_view thinningCommand(SnapshotKind kind);

struct LocalSnapshot {
    std::string name;  // as the platform names it: the APFS name, the subvolume path, the logical volume
    SnapshotKind kind = SnapshotKind::apfs;
    std::optional<std::string> uuid;
    // When it was taken, as the machine's wall clock read then ("2026-07-30 07:19:23"): the names
    // and listings carry no time zone, so no instant is made up from them.
    std::optional<std::string> localTime;
    // Space that only this snapshot holds, where the platform tells (btrfs, LVM; never APFS).
    std::optional<std::int64_t> bytes;
    std::optional<bool> isPurgeable;            // the system may delete it when space runs low
    std::optional<bool> limitsContainerShrink;  // it sets the minimal size of its APFS container
    std::string source;                         // the listing it comes from ("diskutil apfs listSnapshots")

    bool operator==(const LocalSnapshot&) const = default;
};
CORVEL_JSON_RECORD(LocalSnapshot, name, kind, uuid, localTime, bytes, isPurgeable, limitsContainerShrink, source)

}  // namespace corvel
