#include "accounting/VolumeAccounting.h"

#include "accounting/BtrfsClient.h"
#include "accounting/BtrfsParser.h"
#include "accounting/StorageAccounting.h"
#include "accounting/SwapArea.h"
#include "common/CheckedArithmetic.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "storage/MountInfoEntry.h"

#include <algorithm>
#include <exception>

namespace corvel::VolumeAccounting {
namespace {

constexpr const char* statvfsSource = "statvfs";
constexpr const char* dfSource = "btrfs filesystem df";
constexpr const char* listSource = "btrfs subvolume list";
constexpr const char* duSource = "btrfs filesystem du";
constexpr const char* swapsSource = "/proc/swaps";
constexpr const char* summarySource = "velmora scan";

std::string plural(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

AccountingRow unknownRow(AccountingPart part, const char* source) {
    return {part, std::nullopt, source, ""};
}

std::string reserveDetail(const std::string& fileSystemType) {
    // ext2/3/4 keep a share for root so that a full disk still lets the system log and recover;
    // other file systems report a gap between free and available for their own bookkeeping.
    return startsWith(fileSystemType, "ext") ? "for root" : "kept back by the file system";
}

void addBtrfsMetadata(StorageAccount& account, BtrfsClient& btrfs) {
    try {
        const auto lines = BtrfsParser::parseFilesystemDf(btrfs.chunkUsage(account.mountPoint));
        const auto bytes = StorageAccounting::btrfsMetadataBytes(lines);
        if (!bytes) throw std::runtime_error("chunk sizes too large to add up");
        std::string profiles;
        for (const auto& line : lines) {
            if (line.type != "Metadata") continue;
            profiles += profiles.empty() ? line.profile : ", " + line.profile;
        }
        account.rows.push_back(
            {AccountingPart::metadata, bytes, dfSource, profiles.empty() ? "" : profiles + " chunks"});
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string(dfSource) + ": " + error.what());
        account.rows.push_back(unknownRow(AccountingPart::metadata, dfSource));
    }
}

void addBtrfsSnapshots(StorageAccount& account, BtrfsClient& btrfs, const std::string& mountRoot) {
    std::vector<BtrfsSubvolume> subvolumes;
    try {
        subvolumes = BtrfsParser::parseSubvolumeList(btrfs.listSnapshots(account.mountPoint));
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string(listSource) + ": " + error.what());
        account.rows.push_back(unknownRow(AccountingPart::snapshots, listSource));
        return;
    }
    std::vector<std::string> locations;
    for (const auto& subvolume : subvolumes) {
        LocalSnapshot snapshot;
        snapshot.name = subvolume.path;
        snapshot.kind = SnapshotKind::btrfs;
        snapshot.localTime = subvolume.localTime;
        snapshot.source = listSource;
        account.snapshots.push_back(std::move(snapshot));
        if (auto location = StorageAccounting::subvolumeLocation(account.mountPoint, mountRoot, subvolume.path))
            locations.push_back(*location);
    }
    if (subvolumes.empty()) {
        account.rows.push_back({AccountingPart::snapshots, 0, listSource, "none"});
        return;
    }
    if (locations.size() < subvolumes.size())
        account.warnings.push_back(std::string(duSource) + ": " +
                                   plural(subvolumes.size() - locations.size(), "snapshot lies", "snapshots lie") +
                                   " outside the mounted subvolume; mount the top level to measure them");
    try {
        const auto usage =
            locations.empty() ? std::vector<BtrfsUsage>{} : BtrfsParser::parseFilesystemDu(btrfs.usage(locations));
        for (auto& snapshot : account.snapshots) {
            const auto location = StorageAccounting::subvolumeLocation(account.mountPoint, mountRoot, snapshot.name);
            if (!location) continue;
            const auto found = std::find_if(usage.begin(), usage.end(),
                                            [&](const BtrfsUsage& entry) { return entry.path == *location; });
            if (found != usage.end()) snapshot.bytes = found->exclusiveBytes;
        }
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string(duSource) + ": " + error.what());
    }
    std::vector<std::optional<std::int64_t>> sizes;
    for (const auto& snapshot : account.snapshots) sizes.push_back(snapshot.bytes);
    // Only what the snapshots hold alone: blocks they share with the live files are counted there.
    account.rows.push_back({AccountingPart::snapshots, StorageAccounting::sum(sizes), duSource,
                            plural(subvolumes.size(), "snapshot", "snapshots")});
}

void addSwapFiles(StorageAccount& account, AccountingSources& sources, const std::vector<std::string>& mountPoints) {
    std::vector<SwapArea> areas;
    try {
        areas = SwapArea::parseList(sources.swaps());
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string(swapsSource) + ": " + error.what());
        account.rows.push_back(unknownRow(AccountingPart::swapFiles, swapsSource));
        return;
    }
    std::vector<std::optional<std::int64_t>> sizes;
    for (auto& area : areas) {
        if (!area.isFile() || StorageAccounting::mountPointOf(area.path, mountPoints) != account.mountPoint) continue;
        sizes.push_back(area.sizeBytes);
        account.swapFiles.push_back(std::move(area));
    }
    if (account.swapFiles.empty()) return;
    account.rows.push_back({AccountingPart::swapFiles, StorageAccounting::sum(sizes), swapsSource,
                            plural(account.swapFiles.size(), "file", "files")});
}

void addLastScan(StorageAccount& account, const std::optional<SpaceSummary>& lastScan,
                 const std::vector<std::string>& mountPoints) {
    if (!lastScan || StorageAccounting::mountPointOf(lastScan->root, mountPoints) != account.mountPoint) return;
    account.scannedFolder = lastScan->root;
    account.scannedAt = lastScan->scannedAt;
    account.rows.push_back({AccountingPart::seenByLastScan, lastScan->allocatedBytes, summarySource,
                            lastScan->wasCancelled ? "cancelled part way" : ""});
}

}  // namespace

StorageAccount read(const std::string& mountPoint, AccountingSources& sources, CommandRunning& runner,
                    const std::optional<SpaceSummary>& lastScan) {
    StorageAccount account;
    account.mountPoint = mountPoint;

    std::vector<std::string> mountPoints{mountPoint};
    std::string mountRoot = "/";
    try {
        for (const auto& entry : MountInfoEntry::parse(sources.mountInfo())) {
            mountPoints.push_back(entry.mountPoint);
            // A later mount on the same point hides the earlier one, so the last entry counts.
            if (entry.mountPoint != mountPoint) continue;
            account.fileSystemType = entry.fileSystemType;
            account.device = entry.source;
            mountRoot = entry.root;
        }
        if (account.fileSystemType.empty())
            account.warnings.push_back("mount table: nothing is mounted at " + mountPoint);
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string("mount table: ") + error.what());
    }

    StatvfsFigures figures;
    try {
        figures = sources.statvfs(mountPoint);
    } catch (const std::exception& error) {
        account.warnings.push_back(std::string(statvfsSource) + ": " + error.what());
        return account;
    }
    account.capacityBytes = std::max<std::int64_t>(figures.totalBytes, 0);
    account.availableBytes = std::clamp<std::int64_t>(figures.availableBytes, 0, account.capacityBytes);
    account.usedBytes = checkedSubtract(account.capacityBytes, account.availableBytes);

    const std::int64_t free =
        std::clamp<std::int64_t>(figures.freeBytes, account.availableBytes, account.capacityBytes);
    if (free > account.availableBytes)
        account.rows.push_back({AccountingPart::reservedBlocks, checkedSubtract(free, account.availableBytes),
                                statvfsSource, reserveDetail(account.fileSystemType)});

    if (account.fileSystemType == "btrfs") {
        BtrfsClient btrfs{runner};
        addBtrfsMetadata(account, btrfs);
        addBtrfsSnapshots(account, btrfs, mountRoot);
    }
    addSwapFiles(account, sources, mountPoints);
    addLastScan(account, lastScan, mountPoints);

    if (auto rest = StorageAccounting::remainder(account.usedBytes, account.rows))
        account.rows.push_back(*rest);
    else
        account.warnings.push_back("the parts are too large to add up; no remainder is shown");
    return account;
}

}  // namespace corvel::VolumeAccounting
