#include "accounting/LocalSnapshot.h"

namespace corvel {
namespace {

struct Thinning {
    SnapshotKind kind;
    std::string_view tool;
    std::string_view command;
};

constexpr std::array<Thinning, 3> thinnings{{
    {SnapshotKind::apfs, "tmutil", "tmutil thinlocalsnapshots / BYTES 4, or tmutil deletelocalsnapshots DATE"},
    {SnapshotKind::btrfs, "btrfs subvolume delete", "btrfs subvolume delete PATH (or the tool that made them)"},
    {SnapshotKind::lvm, "lvremove", "lvremove VG/SNAPSHOT"},
}};

const Thinning& thinningOf(SnapshotKind kind) {
    for (const auto& thinning : thinnings)
        if (thinning.kind == kind) return thinning;
    return thinnings.front();
}

}  // namespace

std::string_view thinningTool(SnapshotKind kind) {
    return thinningOf(kind).tool;
}

std::string_view thinningCommand(SnapshotKind kind) {
    return thinningOf(kind).command;
}

}  // namespace corvel
