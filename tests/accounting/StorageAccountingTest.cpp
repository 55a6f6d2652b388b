// The split's arithmetic at its boundaries, and an account read through fake kernel tables and a
// scripted btrfs tool, failures included: a part that cannot be read is unknown, never zero.
#include "accounting/StorageAccounting.h"
#include "accounting/VolumeAccounting.h"
#include "command/CommandError.h"
#include "support/ScriptedRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::Optional;
using testing::ScriptedRunner;

constexpr std::int64_t maximum = std::numeric_limits<std::int64_t>::max();

AccountingRow part(std::optional<std::int64_t> bytes) {
    return {AccountingPart::snapshots, bytes, "test", ""};
}

TEST(StorageAccounting, RemainderAtItsBoundaries) {
    struct Case {
        std::int64_t used;
        std::vector<AccountingRow> parts;
        std::optional<AccountingPart> part;
        std::optional<std::int64_t> bytes;
    };
    const std::vector<Case> cases{
        {100, {part(30), part(70)}, AccountingPart::notExplained, 0},
        {100, {part(30), part(71)}, AccountingPart::countedTwice, 1},
        {100, {part(30), part(std::nullopt)}, AccountingPart::notExplained, 70},  // unknown stays in the rest
        {0, {}, AccountingPart::notExplained, 0},
        {maximum, {part(maximum)}, AccountingPart::notExplained, 0},
        {0, {part(maximum)}, AccountingPart::countedTwice, maximum},
        {maximum, {part(maximum), part(1)}, std::nullopt, std::nullopt},  // cannot be added in 64 bits
        {-1, {}, std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        const auto row = StorageAccounting::remainder(c.used, c.parts);
        if (!c.part) {
            EXPECT_EQ(row, std::nullopt) << c.used;
            continue;
        }
        ASSERT_TRUE(row) << c.used;
        EXPECT_EQ(row->part, *c.part) << c.used;
        EXPECT_EQ(row->bytes, c.bytes) << c.used;
    }
}

TEST(StorageAccounting, MetadataCountsEveryCopyButNotTheGlobalReserve) {
    EXPECT_THAT(StorageAccounting::btrfsMetadataBytes({{"Data", "single", 900, 800},
                                                       {"System", "DUP", 64, 16},
                                                       {"Metadata", "RAID1C3", 300, 100},
                                                       {"GlobalReserve", "single", 50, 10}}),
                Optional(16 * 2 + 100 * 3));
    EXPECT_EQ(StorageAccounting::btrfsMetadataBytes({{"Metadata", "DUP", maximum, maximum / 2 + 1}}), std::nullopt);
}

TEST(StorageAccounting, PlacesPathsAndSubvolumesOnTheirMounts) {
    const std::vector<std::string> mounts{"/", "/home", "/home/me/data"};
    EXPECT_THAT(StorageAccounting::mountPointOf("/home/me/x", mounts), Optional(std::string("/home")));
    EXPECT_THAT(StorageAccounting::mountPointOf("/homework", mounts), Optional(std::string("/")));
    EXPECT_THAT(StorageAccounting::mountPointOf("/home/me/data", mounts), Optional(std::string("/home/me/data")));

    using StorageAccounting::subvolumeLocation;
    EXPECT_THAT(subvolumeLocation("/", "/@", "@/.snapshots/1/snapshot"),
                Optional(std::string("/.snapshots/1/snapshot")));
    EXPECT_THAT(subvolumeLocation("/mnt", "/", ".snapshots/a"), Optional(std::string("/mnt/.snapshots/a")));
    EXPECT_EQ(subvolumeLocation("/", "/@", "timeshift-btrfs/snapshots/x/@"), std::nullopt);
    EXPECT_EQ(subvolumeLocation("/", "/@", "@home"), std::nullopt);  // "@home" is not below "@"
    EXPECT_EQ(subvolumeLocation("/", "/@", "@"), std::nullopt);      // the mounted subvolume itself
}

class FakeSources : public AccountingSources {
public:
    std::string mountInfoText;
    StatvfsFigures figures{1000000, 300000, 250000};
    std::optional<std::string> swapText = "Filename Type Size Used Priority\n";

    std::string mountInfo() override { return mountInfoText; }
    StatvfsFigures statvfs(const std::string& mountPoint) override {
        if (mountPoint != "/") throw std::runtime_error("no figures for " + mountPoint);
        return figures;
    }
    std::string swaps() override {
        if (!swapText) throw std::runtime_error("cannot open /proc/swaps");
        return *swapText;
    }
};

constexpr const char* btrfsRoot =
    "28 1 0:26 /@ / rw,noatime shared:1 - btrfs /dev/nvme0n1p2 rw,subvol=/@\n"
    "63 28 0:26 /@home /home rw,noatime shared:2 - btrfs /dev/nvme0n1p2 rw,subvol=/@home\n";

class VolumeAccountingTest : public ::testing::Test {
protected:
    void SetUp() override {
        sources.mountInfoText = btrfsRoot;
        runner.answer("/usr/bin/btrfs", {"filesystem", "df", "-b", "/"},
                      std::string("Metadata, DUP: total=40000, used=10000\nSystem, DUP: total=100, used=50\n"));
        runner.answer(
            "/usr/bin/btrfs", {"subvolume", "list", "-s", "/"},
            std::string("ID 267 gen 9 cgen 5 top level 256 otime 2026-10-02 09:00:01 path @/.snapshots/1/snapshot\n"));
        runner.answer("/usr/bin/btrfs", {"filesystem", "du", "-s", "--raw", "--", "/.snapshots/1/snapshot"},
                      std::string("Total Exclusive Set shared Filename\n90000 40000 50000 /.snapshots/1/snapshot\n"));
    }

    FakeSources sources;
    ScriptedRunner runner;
};

TEST_F(VolumeAccountingTest, SplitsABtrfsRootIntoItsParts) {
    sources.swapText = "Filename Type Size Used Priority\n/swapfile file 100 0 -2\n/home/swap file 7 0 -2\n";
    const SpaceSummary onHome{"/home/me", {}, false, 123, {}, {}};
    const auto account = VolumeAccounting::read("/", sources, runner, onHome);
    EXPECT_EQ(account.usedBytes, 750000);
    EXPECT_THAT(
        account.rows,
        ElementsAre(AccountingRow{AccountingPart::reservedBlocks, 50000, "statvfs", "kept back by the file system"},
                    Field(&AccountingRow::bytes, Optional(20100)), Field(&AccountingRow::bytes, Optional(40000)),
                    Field(&AccountingRow::bytes, Optional(102400)),  // /home/swap is elsewhere
                    AccountingRow{AccountingPart::notExplained, 537500, "remainder", ""}));
    EXPECT_THAT(account.snapshots, ElementsAre(Field(&LocalSnapshot::bytes, Optional(40000))));
    EXPECT_EQ(account.scannedFolder, std::nullopt);  // the scan was of /home, another mount
    EXPECT_TRUE(account.warnings.empty());
}

TEST_F(VolumeAccountingTest, FailedListingsReadAsUnknownWithOneWarningEach) {
    runner.answer("/usr/bin/btrfs", {"subvolume", "list", "-s", "/"}, CommandError::timedOut());
    runner.answer("/usr/bin/btrfs", {"filesystem", "df", "-b", "/"}, std::string("garbage\n"));
    sources.swapText.reset();
    const auto account = VolumeAccounting::read("/", sources, runner, std::nullopt);
    EXPECT_THAT(account.rows,
                Contains(AccountingRow{AccountingPart::snapshots, std::nullopt, "btrfs subvolume list", ""}));
    EXPECT_THAT(account.rows,
                Contains(AccountingRow{AccountingPart::metadata, std::nullopt, "btrfs filesystem df", ""}));
    EXPECT_THAT(account.rows, Contains(Field(&AccountingRow::part, AccountingPart::swapFiles)));
    EXPECT_THAT(account.warnings, ElementsAre(HasSubstr("btrfs filesystem df: "), HasSubstr("btrfs subvolume list: "),
                                              HasSubstr("/proc/swaps: cannot open")));
    EXPECT_THAT(account.rows.back(), Field(&AccountingRow::bytes, Optional(700000)));
}

TEST_F(VolumeAccountingTest, SnapshotsOutsideTheMountedSubvolumeAreUnknown) {
    runner.answer("/usr/bin/btrfs", {"subvolume", "list", "-s", "/"},
                  std::string("ID 400 gen 9 top level 5 otime - path timeshift-btrfs/snapshots/1/@\n"));
    const auto account = VolumeAccounting::read("/", sources, runner, std::nullopt);
    EXPECT_THAT(account.rows,
                Contains(AccountingRow{AccountingPart::snapshots, std::nullopt, "btrfs filesystem du", "1 snapshot"}));
    EXPECT_THAT(account.warnings, ElementsAre(HasSubstr("outside the mounted subvolume")));
    EXPECT_THAT(runner.calls, ::testing::Not(Contains(Field(&ScriptedRunner::Call::arguments, Contains("du")))));
}

TEST(VolumeAccounting, Ext4ReservesForRootAndAScanThatSawMoreIsCountedTwice) {
    FakeSources sources;
    sources.mountInfoText = "28 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n";
    ScriptedRunner runner;
    const SpaceSummary onRoot{"/", {}, true, 800000, {}, {}};
    const auto account = VolumeAccounting::read("/", sources, runner, onRoot);
    EXPECT_THAT(account.rows,
                ElementsAre(AccountingRow{AccountingPart::reservedBlocks, 50000, "statvfs", "for root"},
                            AccountingRow{AccountingPart::seenByLastScan, 800000, "velmora scan", "cancelled part way"},
                            AccountingRow{AccountingPart::countedTwice, 100000, "remainder", ""}));
    EXPECT_TRUE(runner.calls.empty());  // no btrfs tool for an ext4 volume
}

TEST(VolumeAccounting, UnreadableCapacityLeavesNoRowsButSaysWhy) {
    FakeSources sources;
    ScriptedRunner runner;
    const auto account = VolumeAccounting::read("/elsewhere", sources, runner, std::nullopt);
    EXPECT_TRUE(account.rows.empty());
    EXPECT_THAT(account.warnings,
                ElementsAre(HasSubstr("nothing is mounted at /elsewhere"), "statvfs: no figures for /elsewhere"));
}

}  // namespace
}  // namespace corvel
