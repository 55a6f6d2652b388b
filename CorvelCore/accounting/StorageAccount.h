// Where one volume's used space goes: the parts that can be explained, each with the listing it
// comes from, and the remainder that cannot, never hidden. A part whose listing failed keeps its
// row with no size ("unknown"), so that a failure never reads as zero.
//
//   StorageAccount account = VolumeAccounting::read("/", sources, runner, summary);
//   for (const auto& row : account.rows) { label(row.part); row.bytes; row.source; }
#pragma once

#include "accounting/LocalSnapshot.h"
#include "accounting/SwapArea.h"
#include "common/EnumTable.h"
#include "common/ISO8601.h"
#include "common/Json.h"
#include "storage/APFSContainer.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

enum class AccountingPart {
    reservedBlocks,
    metadata,
    systemVolume,
    prebootVolume,
    recoveryVolume,
    vmVolume,
    otherVolume,
    snapshots,
    purgeable,
    swapFiles,
    seenByLastScan,
    notExplained,
    countedTwice
};

template <>
struct EnumTable<AccountingPart> {
    static constexpr std::array<EnumEntry<AccountingPart>, 13> entries{{
        {AccountingPart::reservedBlocks, "reservedBlocks", "reserved blocks"},
        {AccountingPart::metadata, "metadata", "file-system metadata"},
        {AccountingPart::systemVolume, "systemVolume", "System volume"},
        {AccountingPart::prebootVolume, "prebootVolume", "Preboot volume"},
        {AccountingPart::recoveryVolume, "recoveryVolume", "Recovery volume"},
        {AccountingPart::vmVolume, "vmVolume", "VM volume (swap files)"},
        {AccountingPart::otherVolume, "otherVolume", "other volume"},
        {AccountingPart::snapshots, "snapshots", "local snapshots", Tone::notice},
        {AccountingPart::purgeable, "purgeable", "purgeable space"},
        {AccountingPart::swapFiles, "swapFiles", "swap files"},
        {AccountingPart::seenByLastScan, "seenByLastScan", "seen by the last scan"},
        {AccountingPart::notExplained, "notExplained",
         "not explained (not readable by you, or outside the scanned folder)", Tone::muted},
        {AccountingPart::countedTwice, "countedTwice", "counted twice", Tone::caution},
    }};
};
CORVEL_ENUM_JSON(AccountingPart)

struct AccountingRow {
    AccountingPart part = AccountingPart::notExplained;
    std::optional<std::int64_t> bytes;  // absent: the listing failed ("unknown"), never 0
    std::string source;                 // where the figure comes from ("statvfs", "btrfs filesystem du")
    std::string detail;                 // what it holds, for people ("2 snapshots", "for root")

    bool operator==(const AccountingRow&) const = default;
};
CORVEL_JSON_RECORD(AccountingRow, part, bytes, source, detail)

struct StorageAccount {
    std::string mountPoint;
    std::string fileSystemType;  // "btrfs", "ext4", "apfs"
    std::string device;          // what is mounted ("/dev/nvme0n1p2"), or the APFS container ("disk3")
    std::int64_t capacityBytes = 0;
    std::int64_t availableBytes = 0;
    std::int64_t usedBytes = 0;  // capacity − available, the figure the rest of Velmora shows
    // The explained parts in a fixed order, then the remainder (absent when the parts could not
    // be added up at all).
    std::vector<AccountingRow> rows;
    // On a Mac the account covers the whole APFS container: its volumes share its free space.
    std::vector<APFSVolumeEntry> containerVolumes;
    std::vector<LocalSnapshot> snapshots;
    std::vector<SwapArea> swapFiles;
    std::optional<std::string> scannedFolder;  // the last scan's folder, when it lies on this volume
    std::optional<TimePoint> scannedAt;
    std::vector<std::string> warnings;  // one line each, naming the listing that failed

    bool operator==(const StorageAccount&) const = default;
};
CORVEL_JSON_RECORD(StorageAccount, mountPoint, fileSystemType, device, capacityBytes, availableBytes, usedBytes, rows,
                   containerVolumes, snapshots, swapFiles, scannedFolder, scannedAt, warnings)

}  // namespace corvel
