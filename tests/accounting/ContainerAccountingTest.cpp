// A Mac volume's account: the APFS container's split at its boundaries with checked sums, the
// roles that name the parts, which volume the snapshots and the scan explain, the purgeable
// figure, the snapshot shares status and the insights mention, and an account read through a
// scripted disk tool whose listings fail, are empty or add up.
#include "accounting/ContainerAccounting.h"
#include "accounting/LocalSnapshotClient.h"
#include "accounting/SnapshotShare.h"
#include "command/CommandError.h"
#include "support/ScriptedRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Optional;
using testing::ScriptedRunner;

constexpr std::int64_t maximum = std::numeric_limits<std::int64_t>::max();

APFSVolumeEntry volume(std::string id, std::string role, std::int64_t inUse) {
    APFSVolumeEntry entry;
    entry.id = std::move(id);
    entry.name = role.empty() ? entry.id : role;
    if (!role.empty()) entry.roles = {role};
    entry.capacityInUse = inUse;
    return entry;
}

// A boot container: System 10, Preboot 5, Recovery 1, VM 4 and the Data volume, 1000 in all.
APFSContainer bootContainer(std::int64_t free, std::int64_t dataInUse = 300) {
    APFSContainer container;
    container.id = "disk3";
    container.capacityCeiling = 1000;
    container.capacityFree = free;
    container.volumes = {volume("disk3s1", "System", 10), volume("disk3s2", "Preboot", 5),
                         volume("disk3s3", "Recovery", 1), volume("disk3s5", "Data", dataInUse),
                         volume("disk3s6", "VM", 4)};
    return container;
}

APFSContainer with64BitVolumes() {
    auto container = bootContainer(0);
    container.volumes[0].capacityInUse = maximum;
    return container;
}

LocalSnapshot snapshot(std::string name) {
    LocalSnapshot result;
    result.name = std::move(name);
    return result;
}

SpaceSummary scan(std::int64_t allocated) {
    SpaceSummary summary;
    summary.root = "/Users/dana";
    summary.allocatedBytes = allocated;
    return summary;
}

std::optional<std::int64_t> bytesOf(const StorageAccount& account, AccountingPart part) {
    for (const auto& row : account.rows)
        if (row.part == part) return row.bytes;
    return std::nullopt;
}

TEST(ContainerAccounting, SplitsTheContainerAtItsBoundaries) {
    struct Case {
        const char* what;
        APFSContainer container;
        ContainerAccounting::Listings listings;
        std::int64_t used;
        std::optional<AccountingPart> last;  // absent: no remainder could be made
        std::optional<std::int64_t> lastBytes;
    };
    // Listed, with no snapshots: 30 purgeable and a scan that saw `scanned`.
    const auto listed = [](std::int64_t scanned) {
        return ContainerAccounting::Listings{true, std::vector<LocalSnapshot>{}, 30, scan(scanned)};
    };
    const ContainerAccounting::Listings unsized{true, std::vector<LocalSnapshot>{snapshot("a")}, std::nullopt,
                                                std::nullopt};
    const auto none = std::optional<std::int64_t>();
    const std::vector<Case> cases{
        // 600 used − 20 in the other volumes − 0 snapshots − 30 purgeable − 500 scanned = 50.
        {"parts below the used space", bootContainer(400), listed(500), 600, AccountingPart::notExplained, 50},
        {"parts exactly the used space", bootContainer(400), listed(550), 600, AccountingPart::notExplained, 0},
        {"a scan that saw more is counted twice", bootContainer(400), listed(551), 600, AccountingPart::countedTwice,
         1},
        {"an unknown snapshot size stays in the rest", bootContainer(400), unsized, 600, AccountingPart::notExplained,
         580},
        {"more free than capacity is nothing used", bootContainer(2000), {}, 0, AccountingPart::countedTwice, 20},
        {"negative free is all used", bootContainer(-5), {}, 1000, AccountingPart::notExplained, 980},
        {"volumes too large to add", with64BitVolumes(), {}, 1000, std::nullopt, none},
    };
    for (const auto& c : cases) {
        const auto account = ContainerAccounting::split(c.container, "disk3s5", c.listings);
        EXPECT_EQ(account.usedBytes, c.used) << c.what;
        EXPECT_EQ(account.capacityBytes - account.availableBytes, account.usedBytes) << c.what;
        ASSERT_FALSE(account.rows.empty()) << c.what;
        if (!c.last) {
            EXPECT_THAT(account.rows, Not(Contains(Field(&AccountingRow::part, AccountingPart::notExplained))))
                << c.what;
            EXPECT_THAT(account.warnings, Contains(HasSubstr("too large to add up"))) << c.what;
            continue;
        }
        EXPECT_EQ(account.rows.back().part, *c.last) << c.what;
        EXPECT_EQ(account.rows.back().bytes, c.lastBytes) << c.what;
    }
}

TEST(ContainerAccounting, EachOtherVolumeIsAPartNamedByItsRole) {
    const auto account = ContainerAccounting::split(bootContainer(400), "disk3s5", {});
    EXPECT_THAT(
        account.rows,
        ElementsAre(
            AllOf(Field(&AccountingRow::part, AccountingPart::systemVolume), Field(&AccountingRow::bytes, Optional(10)),
                  Field(&AccountingRow::detail, "System (disk3s1)")),
            Field(&AccountingRow::part, AccountingPart::prebootVolume),
            Field(&AccountingRow::part, AccountingPart::recoveryVolume),
            AllOf(Field(&AccountingRow::part, AccountingPart::vmVolume), Field(&AccountingRow::bytes, Optional(4))),
            // The listing failed: unknown, never 0.
            AllOf(Field(&AccountingRow::part, AccountingPart::snapshots), Field(&AccountingRow::bytes, std::nullopt)),
            Field(&AccountingRow::part, AccountingPart::notExplained)));
    EXPECT_EQ(account.device, "disk3");
    EXPECT_EQ(account.containerVolumes.size(), 5u);

    struct Case {
        std::vector<std::string> roles;
        AccountingPart part;
    };
    const std::vector<Case> cases{{{"System"}, AccountingPart::systemVolume},
                                  {{"Preboot"}, AccountingPart::prebootVolume},
                                  {{"Recovery"}, AccountingPart::recoveryVolume},
                                  {{"VM"}, AccountingPart::vmVolume},
                                  {{"Data"}, AccountingPart::otherVolume},
                                  {{"Update"}, AccountingPart::otherVolume},
                                  {{}, AccountingPart::otherVolume},
                                  {{"User", "VM"}, AccountingPart::vmVolume}};
    for (const auto& c : cases)
        EXPECT_EQ(ContainerAccounting::partOfRoles(c.roles), c.part) << ::testing::PrintToString(c.roles);
}

TEST(ContainerAccounting, SnapshotRowIsZeroOnlyWithoutSnapshots) {
    ContainerAccounting::Listings empty{true, std::vector<LocalSnapshot>{}, std::nullopt, std::nullopt};
    EXPECT_THAT(ContainerAccounting::split(bootContainer(400), "disk3s5", empty).rows,
                Contains(AllOf(Field(&AccountingRow::part, AccountingPart::snapshots),
                               Field(&AccountingRow::bytes, Optional(0)), Field(&AccountingRow::detail, "none"))));
    ContainerAccounting::Listings listed{true, std::vector<LocalSnapshot>{snapshot("a"), snapshot("b")}, 7,
                                         std::nullopt};
    const auto account = ContainerAccounting::split(bootContainer(400), "disk3s5", listed);
    EXPECT_THAT(account.rows, Contains(AllOf(Field(&AccountingRow::part, AccountingPart::snapshots),
                                             Field(&AccountingRow::bytes, std::nullopt),
                                             Field(&AccountingRow::detail, HasSubstr("2 snapshots")))));
    EXPECT_EQ(bytesOf(account, AccountingPart::purgeable), 7);
    EXPECT_EQ(account.snapshots.size(), 2u);

    ContainerAccounting::Listings notAPFS{false, std::nullopt, std::nullopt, std::nullopt};
    EXPECT_THAT(ContainerAccounting::split(bootContainer(400), "disk3s5", notAPFS).rows,
                Not(Contains(Field(&AccountingRow::part, AccountingPart::snapshots))));
}

TEST(ContainerAccounting, TheDataVolumeSpeaksForTheBootedSystem) {
    struct Case {
        std::string chosen;
        std::string main;
    };
    const std::vector<Case> cases{
        {"disk3s1s1", "disk3s5"},  // the sealed system snapshot the Mac boots from
        {"disk3s1", "disk3s5"},   {"disk3s5", "disk3s5"},
        {"disk3s6", "disk3s6"},   {"disk3s10", "disk3s10"},  // not a snapshot of disk3s1
        {"disk9s1", "disk9s1"},   {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ContainerAccounting::mainVolumeID(bootContainer(0), c.chosen), c.main) << c.chosen;
    auto withoutData = bootContainer(0);
    withoutData.volumes.erase(withoutData.volumes.begin() + 3);
    EXPECT_EQ(ContainerAccounting::mainVolumeID(withoutData, "disk3s1s1"), "disk3s1");
}

TEST(ContainerAccounting, PurgeableIsTheGapToTheImportantUseFigure) {
    struct Case {
        std::int64_t available;
        std::optional<std::int64_t> important;
        std::optional<std::int64_t> purgeable;
    };
    const std::vector<Case> cases{
        {100, 130, 30},          {100, 100, 0},           {100, 90, 0},         {100, std::nullopt, std::nullopt},
        {-1, 130, std::nullopt}, {100, -1, std::nullopt}, {0, maximum, maximum}};
    for (const auto& c : cases) {
        MountedVolumeRecord record;
        record.availableBytes = c.available;
        record.importantAvailableBytes = c.important;
        EXPECT_EQ(ContainerAccounting::purgeableOf(record), c.purgeable) << c.available;
    }
}

TEST(SnapshotShare, MoreThanFivePercentIsNoticeable) {
    struct Case {
        std::int64_t bytes;
        std::int64_t capacity;
        bool noticeable;
    };
    const std::vector<Case> cases{
        {100, 2000, false},  // exactly 5 %
        {101, 2000, true},
        {100, 2019, false},
        {101, 2019, true},
        {0, 2000, false},
        {1, 0, false},
        {-5, 2000, false},
        {maximum / 20, maximum, false},
        {maximum / 20 + 1, maximum, true},
        {maximum, maximum, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ((SnapshotShare{"/", SnapshotKind::btrfs, 1, c.bytes, c.capacity}.isNoticeable()), c.noticeable)
            << c.bytes << " of " << c.capacity;
}

TEST(SnapshotShare, OnlyASizedSnapshotRowMakesAShare) {
    StorageAccount account;
    account.mountPoint = "/";
    account.capacityBytes = 1000;
    account.snapshots = {snapshot("a")};
    account.snapshots[0].kind = SnapshotKind::btrfs;
    account.rows = {{AccountingPart::snapshots, 60, "btrfs filesystem du", ""}};
    EXPECT_THAT(SnapshotShare::of(account), Optional(SnapshotShare{"/", SnapshotKind::btrfs, 1, 60, 1000}));
    account.rows[0].bytes = std::nullopt;
    EXPECT_EQ(SnapshotShare::of(account), std::nullopt);
    account.rows[0].bytes = 0;
    EXPECT_EQ(SnapshotShare::of(account), std::nullopt);
    account.rows.clear();
    EXPECT_EQ(SnapshotShare::of(account), std::nullopt);
}

TEST(LocalSnapshotClient, PoliciesOnlyList) {
    struct Case {
        const CommandPolicy& policy;
        std::vector<std::string> arguments;
        bool permitted;
    };
    const std::vector<Case> cases{
        {LocalSnapshotClient::apfsPolicy(), {"apfs", "listSnapshots", "-plist", "disk3s5"}, true},
        {LocalSnapshotClient::apfsPolicy(), {"apfs", "deleteSnapshot", "disk3s5", "-name", "x"}, false},
        {LocalSnapshotClient::apfsPolicy(), {"apfs", "list", "-plist"}, false},
        {LocalSnapshotClient::timeMachinePolicy(), {"listlocalsnapshots", "/"}, true},
        {LocalSnapshotClient::timeMachinePolicy(), {"thinlocalsnapshots", "/", "1000000000", "4"}, false},
        {LocalSnapshotClient::timeMachinePolicy(), {"deletelocalsnapshots", "2026-11-02-071502"}, false},
        {LocalSnapshotClient::timeMachinePolicy(), {"listlocalsnapshots", "/Volumes/Other"}, false},
    };
    for (const auto& c : cases) EXPECT_EQ(c.policy.permits(c.arguments), c.permitted) << c.arguments[0];
}

class FakeSources : public AccountingSources {
public:
    std::string mountInfo() override { throw std::runtime_error("not here"); }
    StatvfsFigures statvfs(const std::string&) override { throw std::runtime_error("not here"); }
    std::string swaps() override { throw std::runtime_error("not here"); }
    std::optional<std::int64_t> purgeableBytes(const std::string&) override { return 30; }
};

constexpr const char* twoSnapshots = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>Snapshots</key><array>
<dict><key>Purgeable</key><true/><key>SnapshotName</key><string>com.apple.TimeMachine.2026-11-01-213044.local</string></dict>
<dict><key>Purgeable</key><true/><key>SnapshotName</key><string>com.apple.TimeMachine.2026-11-02-071502.local</string></dict>
</array></dict></plist>)";

class ContainerReading : public ::testing::Test {
protected:
    void SetUp() override {
        StorageVolume root;
        root.id = "root";
        root.mountPoint = "/";
        root.bsdName = "disk3s1s1";
        root.containerID = "disk3";
        root.fileSystemType = "apfs";
        root.isBootVolume = true;
        StorageVolume data = root;
        data.id = "data";
        data.mountPoint = "/System/Volumes/Data";
        data.bsdName = "disk3s5";
        data.isBootVolume = false;
        snapshot_.volumes = {root, data};
        runner_.answer({"apfs", "list", "-plist"}, apfsList());
    }

    static std::string apfsList() {
        std::string volumes;
        for (const auto& [id, role, inUse] : std::vector<std::tuple<std::string, std::string, int>>{
                 {"disk3s1", "System", 10}, {"disk3s5", "Data", 300}, {"disk3s6", "VM", 4}})
            volumes += "<dict><key>DeviceIdentifier</key><string>" + id + "</string><key>Name</key><string>" + role +
                       "</string><key>Roles</key><array><string>" + role +
                       "</string></array><key>CapacityInUse</key><integer>" + std::to_string(inUse) +
                       "</integer></dict>";
        return R"(<?xml version="1.0"?><plist version="1.0"><dict><key>Containers</key><array><dict>)"
               R"(<key>ContainerReference</key><string>disk3</string><key>CapacityCeiling</key><integer>1000)"
               R"(</integer><key>CapacityFree</key><integer>400</integer><key>Volumes</key><array>)" +
               volumes + "</array></dict></array></dict></plist>";
    }

    StorageAccount read(bool timeMachine, const std::optional<SpaceSummary>& lastScan = std::nullopt) {
        return ContainerAccounting::read(snapshot_.volumes[0], snapshot_, sources_, runner_, timeMachine, lastScan);
    }

    StorageSnapshot snapshot_;
    FakeSources sources_;
    ScriptedRunner runner_;
};

TEST_F(ContainerReading, ListsTheDataVolumesSnapshotsAndAddsTimeMachinesOwn) {
    runner_.answer({"apfs", "listSnapshots", "-plist", "disk3s5"}, twoSnapshots);
    runner_.answer({"listlocalsnapshots", "/"}, std::string("Snapshots for disk /:\n"
                                                            "com.apple.TimeMachine.2026-11-01-213044.local\n"
                                                            "com.apple.TimeMachine.2026-11-02-090000.local\n"));
    const auto account = read(true, scan(500));
    EXPECT_THAT(account.warnings, IsEmpty());
    EXPECT_EQ(account.mountPoint, "/");
    EXPECT_THAT(account.snapshots,
                ElementsAre(Field(&LocalSnapshot::source, "diskutil apfs listSnapshots"),
                            Field(&LocalSnapshot::source, "diskutil apfs listSnapshots"),
                            AllOf(Field(&LocalSnapshot::source, "tmutil listlocalsnapshots"),
                                  Field(&LocalSnapshot::localTime, Optional(std::string("2026-11-02 09:00:00"))))));
    // 600 used − System 10 − VM 4 − purgeable 30 − scan 500 = 56; the Data volume is no part.
    EXPECT_EQ(bytesOf(account, AccountingPart::systemVolume), 10);
    EXPECT_THAT(account.rows, Not(Contains(Field(&AccountingRow::part, AccountingPart::otherVolume))));
    EXPECT_EQ(account.rows.back().part, AccountingPart::notExplained);
    EXPECT_EQ(account.rows.back().bytes, 56);
    EXPECT_EQ(account.scannedFolder, "/Users/dana");
}

TEST_F(ContainerReading, FailedOrMalformedListingsAreOneWarningAndAnUnknownRow) {
    struct Case {
        const char* what;
        ScriptedRunner::Reply reply;
        const char* warning;
    };
    const std::vector<Case> cases{
        {"timed out", CommandError::timedOut(), "diskutil apfs listSnapshots: Command timed out"},
        {"not a listing", std::string("Error: disk3s5 is not an APFS volume"), "diskutil apfs listSnapshots: "},
        {"no Snapshots key",
         std::string(R"(<?xml version="1.0"?><plist version="1.0"><dict><key>Other</key><array/></dict></plist>)"),
         "diskutil apfs listSnapshots: "},
    };
    for (const auto& c : cases) {
        runner_.answer({"apfs", "listSnapshots", "-plist", "disk3s5"}, c.reply);
        const auto account = read(false);
        EXPECT_THAT(account.warnings, ElementsAre(HasSubstr(c.warning))) << c.what;
        EXPECT_THAT(account.rows, Contains(AllOf(Field(&AccountingRow::part, AccountingPart::snapshots),
                                                 Field(&AccountingRow::bytes, std::nullopt))))
            << c.what;
    }
}

TEST_F(ContainerReading, AScanOutsideTheContainerIsNotCounted) {
    runner_.answer({"apfs", "listSnapshots", "-plist", "disk3s5"}, twoSnapshots);
    StorageVolume external;
    external.id = "ext";
    external.mountPoint = "/Volumes/Projects";
    external.containerID = "disk5";
    snapshot_.volumes.push_back(external);
    auto elsewhere = scan(500);
    elsewhere.root = "/Volumes/Projects/app";
    const auto account = read(false, elsewhere);
    EXPECT_EQ(account.scannedFolder, std::nullopt);
    EXPECT_THAT(account.rows, Not(Contains(Field(&AccountingRow::part, AccountingPart::seenByLastScan))));
}

}  // namespace
}  // namespace corvel
