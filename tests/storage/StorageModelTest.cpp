#include "storage/MountedVolumeRecord.h"
#include "storage/StorageSnapshot.h"

#include <gtest/gtest.h>

using namespace corvel;

namespace {

StorageVolume volume(std::string id, std::int64_t total, std::int64_t available) {
    StorageVolume v;
    v.id = id;
    v.name = id;
    v.mountPoint = "/Volumes/" + id;
    v.totalBytes = total;
    v.availableBytes = available;
    return v;
}

}  // namespace

TEST(PhysicalDisk, DisplayNameDropsTheMediaSuffix) {
    PhysicalDisk disk;
    disk.id = "disk4";
    // Every occurrence, case-sensitive; an empty name falls back to the identifier.
    for (const auto& [media, shown] : {std::pair{"APPLE SSD XY1024 Media", "APPLE SSD XY1024"},
                                       {"Media Box Media Media", "Media Box"},
                                       {"Samsung media", "Samsung media"},
                                       {"", "disk4"}}) {
        disk.mediaName = media;
        EXPECT_EQ(disk.displayName(), shown) << media;
    }
}

TEST(PhysicalDisk, ConnectionLabelNamesInsideOrOutsideAndTheBus) {
    PhysicalDisk disk;
    disk.isInternal = true;
    EXPECT_EQ(disk.connectionLabel(), "Internal");
    disk.isInternal = false;
    disk.busProtocol = "";
    EXPECT_EQ(disk.connectionLabel(), "External");
    disk.busProtocol = "USB";
    EXPECT_EQ(disk.connectionLabel(), "External \u00B7 USB");
}

TEST(SMARTStatus, MapsTheDiskToolsText) {
    for (const auto& [text, status] : {std::pair{"Verified", SMARTStatus::verified},
                                       {"About to Fail", SMARTStatus::failing},
                                       {"Failing", SMARTStatus::failing},
                                       {"Not Supported", SMARTStatus::notSupported},
                                       {" verified", SMARTStatus::unknown}})
        EXPECT_EQ(smartStatusFromDiskutil(text), status) << text;
    EXPECT_EQ(smartStatusFromDiskutil(std::nullopt), SMARTStatus::unknown);
}

TEST(NVMeHealth, DataUnitsAreThousandsOf512ByteBlocks) {
    NVMeHealth health;
    EXPECT_EQ(health.bytesWritten(), std::nullopt);
    health.dataUnitsWritten = 1000;
    health.dataUnitsRead = 3;
    EXPECT_EQ(health.bytesWritten(), 512000000);
    EXPECT_EQ(health.bytesRead(), 1536000);
}

TEST(NVMeHealthDeathTest, HugeCountersOverflowLoudly) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    NVMeHealth health;
    health.dataUnitsRead = std::int64_t{1} << 50;
    EXPECT_DEATH(health.bytesRead(), "overflow");
}

TEST(StorageVolume, FractionsOfUnknownOrOverfullVolumes) {
    const auto unknown = volume("a", 0, 0);
    EXPECT_EQ(unknown.usedFraction(), 0);
    EXPECT_EQ(unknown.freeFraction(), 0);  // no free share for a volume of unknown size

    const auto purgeable = volume("b", 100, 150);
    EXPECT_EQ(purgeable.usedBytes(), 0);
    EXPECT_EQ(purgeable.usedFraction(), 0);
    EXPECT_EQ(purgeable.freeFraction(), 1);

    const auto quarter = volume("c", 400, 300);
    EXPECT_EQ(quarter.usedBytes(), 100);
    EXPECT_DOUBLE_EQ(quarter.usedFraction(), 0.25);
    EXPECT_DOUBLE_EQ(quarter.freeFraction(), 0.75);

    // As df counts it: 100 of 1000 reserved for root, 300 available, so 600 used of 900 usable.
    auto reserved = volume("d", 1000, 300);
    reserved.reservedBytes = 100;
    EXPECT_EQ(reserved.usedBytes(), 600);
    EXPECT_DOUBLE_EQ(reserved.usedFraction(), 600.0 / 900.0);
}

TEST(StorageVolume, FileSystemLabelFallsBackInOrder) {
    auto v = volume("a", 1, 1);
    EXPECT_EQ(v.fileSystemLabel(), "Unknown");
    v.fileSystemType = "exfat";
    EXPECT_EQ(v.fileSystemLabel(), "EXFAT");
    v.fileSystemName = "ExFAT";
    EXPECT_EQ(v.fileSystemLabel(), "ExFAT");
}

TEST(StorageSnapshot, LookupsAndAttribution) {
    StorageSnapshot snapshot;
    PhysicalDisk disk;
    disk.id = "disk0";
    disk.mediaName = "APPLE SSD AP1024Z Media";
    snapshot.disks = {disk};
    auto onDisk = volume("data", 10, 5);
    onDisk.physicalDiskID = "disk0";
    auto orphan = volume("orphan", 10, 5);
    orphan.physicalDiskID = "disk9";  // names a disk that was not discovered
    auto share = volume("share", 10, 5);
    share.isNetwork = true;
    snapshot.volumes = {onDisk, orphan, share};

    EXPECT_EQ(snapshot.volume("orphan"), orphan);
    EXPECT_EQ(snapshot.volume("Orphan"), std::nullopt);
    EXPECT_EQ(snapshot.disk("disk0"), disk);
    EXPECT_EQ(snapshot.disk("disk9"), std::nullopt);
    EXPECT_EQ(snapshot.volumesOn(disk), std::vector<StorageVolume>{onDisk});
    EXPECT_EQ(snapshot.unassignedVolumes(), (std::vector<StorageVolume>{orphan, share}));

    snapshot.disks.clear();
    EXPECT_EQ(snapshot.unassignedVolumes().size(), 3u);
}

TEST(StorageSnapshot, DistinctLocalCapacityCountsEachContainerOnce) {
    StorageSnapshot snapshot;
    auto system = volume("system", 500'000'000'000, 100'000'000'000);
    system.containerID = "disk3";
    auto data = volume("data", 500'000'000'000, 100'000'000'000);
    data.containerID = "disk3";
    auto share = volume("share", 8'000'000'000'000, 1'000'000'000'000);
    share.isNetwork = true;
    auto hfsA = volume("hfsA", 200, 50);
    auto hfsB = volume("hfsB", 300, 60);
    snapshot.volumes = {system, data, share, hfsA, hfsB};
    EXPECT_EQ(snapshot.distinctLocalCapacity(), (LocalCapacity{500'000'000'500, 100'000'000'110}));
    EXPECT_EQ(StorageSnapshot::empty().distinctLocalCapacity(), LocalCapacity{});
}

TEST(MountedVolumeRecord, RoundTripsThroughJson) {
    MountedVolumeRecord record{"/",   "Macintosh HD", 100,  20,   60,     true, false,
                               false, true,           true, true, "apfs", "U",  true};
    EXPECT_EQ(Json(record).get<MountedVolumeRecord>(), record);
}

TEST(MountedVolumeRecord, EffectiveAvailablePrefersAPositiveImportantFigure) {
    MountedVolumeRecord record;
    record.availableBytes = 10;
    EXPECT_EQ(record.effectiveAvailableBytes(), 10);
    record.importantAvailableBytes = 0;
    EXPECT_EQ(record.effectiveAvailableBytes(), 10);
    record.importantAvailableBytes = 25;
    EXPECT_EQ(record.effectiveAvailableBytes(), 25);
}
