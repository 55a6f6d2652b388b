// Each recorded machine, replayed through the real parsers and discovery, gives the snapshot a
// person looking at that machine would expect.
#include "StorageTestSupport.h"
#include "storage/MachineStorage.h"

#include "command/DiskutilClient.h"
#include "command/RecordedCommandRunner.h"
#include "storage/DiskutilParser.h"

#include <gtest/gtest.h>

using namespace corvel;
using namespace corvel::testing;

namespace {

struct Replay {
    RecordedMachine machine;
    RecordedCommandRunner runner;
    StorageSnapshot snapshot;

    explicit Replay(const std::string& name)
        : machine(RecordedMachine::load(machineDirectory(name))),
          runner(RecordedCommandRunner::load(machineDirectory(name))),
          snapshot(MachineStorage::snapshot(runner, &machine, machine.capturedAt)) {}
};

std::vector<std::string> ids(const std::vector<PhysicalDisk>& disks) {
    std::vector<std::string> result;
    for (const auto& disk : disks) result.push_back(disk.id);
    return result;
}

std::vector<std::string> names(const std::vector<StorageVolume>& volumes) {
    std::vector<std::string> result;
    for (const auto& volume : volumes) result.push_back(volume.name);
    return result;
}

// Counts the runs that reach the recording, to prove which commands discovery made.
class CountingRunner : public CommandRunning {
public:
    explicit CountingRunner(CommandRunning& inner) : inner_(inner) {}
    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override {
        calls.push_back(arguments);
        return inner_.run(executable, arguments);
    }
    std::vector<std::vector<std::string>> calls;

private:
    CommandRunning& inner_;
};

}  // namespace

TEST(RecordedMachines, AppleSiliconLaptop) {
    Replay replay("macbook-air-m2");
    const auto& snapshot = replay.snapshot;
    EXPECT_TRUE(snapshot.warnings.empty());
    EXPECT_EQ(snapshot.capturedAt, *ISO8601::parse("2026-11-02T09:30:00Z"));
    ASSERT_EQ(ids(snapshot.disks), std::vector<std::string>{"disk0"});
    const PhysicalDisk& disk = snapshot.disks[0];
    EXPECT_EQ(disk.displayName(), "APPLE SSD AP0512Z");
    EXPECT_EQ(disk.connectionLabel(), "Internal · Apple Fabric");
    EXPECT_EQ(disk.smartStatus, SMARTStatus::verified);
    ASSERT_TRUE(disk.nvme && disk.nvme->temperatureCelsius);
    EXPECT_NEAR(*disk.nvme->temperatureCelsius, 35.85, 1e-9);
    EXPECT_EQ(disk.partitions.size(), 3u);

    EXPECT_EQ(names(snapshot.volumes), (std::vector<std::string>{"Macintosh HD", "Macintosh HD - Data"}));
    const StorageVolume& root = snapshot.volumes[0];
    EXPECT_TRUE(root.isBootVolume);
    EXPECT_TRUE(root.isReadOnly);
    EXPECT_EQ(root.bsdName, "disk3s1s1");
    EXPECT_EQ(root.containerID, "disk3");
    EXPECT_EQ(root.physicalDiskID, "disk0");  // through the container's physical store disk0s2
    EXPECT_EQ(root.availableBytes, 219876543210);
    EXPECT_EQ(snapshot.volumes[1].isEncrypted, true);
    // Both volumes share one container: its capacity counts once.
    EXPECT_EQ(snapshot.distinctLocalCapacity(), (LocalCapacity{494384795648, 219876543210}));
    EXPECT_TRUE(snapshot.unassignedVolumes().empty());

    // The APFS list in the recording names the container's system, data, preboot, recovery and VM volumes.
    auto containers = DiskutilParser::parseAPFSList(DiskutilClient(replay.runner).apfsList());
    ASSERT_EQ(containers.size(), 3u);
    EXPECT_EQ(containers[1].volumes.size(), 6u);
}

TEST(RecordedMachines, DesktopWithExternalUSBDiskAndShare) {
    Replay replay("mac-studio-external-usb");
    const auto& snapshot = replay.snapshot;
    EXPECT_TRUE(snapshot.warnings.empty());
    ASSERT_EQ(ids(snapshot.disks), (std::vector<std::string>{"disk0", "disk4"}));
    const PhysicalDisk& usb = snapshot.disks[1];
    EXPECT_EQ(usb.displayName(), "WD Elements 25A3");
    EXPECT_EQ(usb.connectionLabel(), "External · USB");
    EXPECT_EQ(usb.smartStatus, SMARTStatus::notSupported);
    EXPECT_TRUE(usb.isEjectable);
    EXPECT_EQ(usb.isSolidState, false);

    EXPECT_EQ(names(snapshot.volumes), (std::vector<std::string>{"Macintosh HD", "Elements", "Projects", "media"}));
    auto exfat = snapshot.volume("6A1C3E5B-0000-4000-8000-53D7F9A1C3E5");
    ASSERT_TRUE(exfat);
    EXPECT_EQ(exfat->fileSystemLabel(), "ExFAT");
    EXPECT_FALSE(exfat->isInternal);  // unreported by the file system: the disk tool's flag
    EXPECT_EQ(exfat->isEncrypted, std::nullopt);
    EXPECT_EQ(exfat->physicalDiskID, "disk4");

    auto projects = snapshot.volume("D3F5A7C9-1B3D-4F5A-97C9-E1B3D5F7A9C1");
    ASSERT_TRUE(projects);
    EXPECT_EQ(projects->isEncrypted, false);
    EXPECT_FALSE(projects->isEjectable);           // the file system says no, whatever the disk tool says
    EXPECT_EQ(projects->physicalDiskID, "disk4");  // container disk5 lives on disk4s3
    EXPECT_EQ(projects->containerID, "disk5");

    auto share = snapshot.volume("/Volumes/media");
    ASSERT_TRUE(share);
    EXPECT_TRUE(share->isNetwork);
    EXPECT_EQ(share->physicalDiskID, std::nullopt);
    EXPECT_EQ(snapshot.volumesOn(snapshot.disks[1]).size(), 2u);

    CountingRunner counting(replay.runner);
    MachineStorage::snapshot(counting, &replay.machine, replay.machine.capturedAt);
    for (const auto& call : counting.calls) EXPECT_NE(call.back(), "/Volumes/media");
}

TEST(RecordedMachines, FlakyToolsBecomeWarningsNotFailures) {
    Replay replay("mac-mini-flaky-tools");
    const auto& snapshot = replay.snapshot;
    EXPECT_EQ(snapshot.warnings, std::vector<std::string>{"Could not read details for disk4: Command timed out"});
    ASSERT_EQ(ids(snapshot.disks), (std::vector<std::string>{"disk0", "disk6"}));
    EXPECT_EQ(snapshot.disks[1].smartStatus, SMARTStatus::failing);
    EXPECT_EQ(snapshot.disks[0].nvme->percentageUsed, 41);

    EXPECT_EQ(names(snapshot.volumes), (std::vector<std::string>{"Macintosh HD", "Archive", "Photos", "X5"}));
    EXPECT_GT(snapshot.volumes[0].usedFraction(), 0.95);
    // The volume whose info failed keeps the file system's facts and no disk.
    auto archive = snapshot.volume("4A6C8E0A-2C4E-3A6C-88E0-A2C4E6A8C0E2");
    ASSERT_TRUE(archive);
    EXPECT_EQ(archive->bsdName, std::nullopt);
    EXPECT_EQ(archive->fileSystemType, "hfs");
    EXPECT_EQ(archive->physicalDiskID, std::nullopt);
    // The volume on the disk that timed out is unassigned as well.
    auto x5 = snapshot.volume("2F4A6C8E-0A2C-4E4A-86C8-E0A2C4E6A8C0");
    ASSERT_TRUE(x5);
    EXPECT_EQ(x5->physicalDiskID, std::nullopt);
    EXPECT_EQ(snapshot.unassignedVolumes().size(), 2u);
    auto photos = snapshot.volume("6C8E0A2C-4E6A-3C8E-A0A2-C4E6A8C0E2A4");
    ASSERT_TRUE(photos);
    EXPECT_EQ(photos->physicalDiskID, "disk6");
    EXPECT_EQ(photos->fileSystemLabel(), "Mac OS Extended (Journaled)");
}

TEST(RecordedMachines, LinuxWorkstation) {
    Replay replay("linux-workstation");
    const auto& snapshot = replay.snapshot;
    EXPECT_TRUE(snapshot.warnings.empty()) << snapshot.warnings.front();
    ASSERT_EQ(ids(snapshot.disks), (std::vector<std::string>{"nvme0n1", "sda", "sdb"}));
    EXPECT_EQ(snapshot.disks[0].smartStatus, SMARTStatus::verified);
    EXPECT_EQ(snapshot.disks[1].smartStatus, SMARTStatus::verified);  // exit status 64 still carries a verdict
    EXPECT_EQ(snapshot.disks[2].smartStatus, SMARTStatus::unknown);   // unknown USB bridge
    EXPECT_EQ(snapshot.disks[1].displayName(), "WDC WD40EFRX-68N32N0");
    EXPECT_EQ(snapshot.disks[2].connectionLabel(), "External · USB");
    EXPECT_EQ(snapshot.disks[0].partitions.size(), 3u);

    EXPECT_EQ(names(snapshot.volumes),
              (std::vector<std::string>{"Root", "USB STICK", "boot", "data", "efi", "home", "nas"}));
    auto root = snapshot.volume("2b9e61c4-7d3a-4f0e-9c57-3e8a1d6b4f20");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->physicalDiskID, "nvme0n1");  // LVM on a crypt mapping on nvme0n1p3
    EXPECT_EQ(root->isEncrypted, true);
    auto stick = snapshot.volume("64C2-8F1D");
    ASSERT_TRUE(stick);
    EXPECT_EQ(stick->mountPoint, "/media/me/USB STICK");
    EXPECT_EQ(stick->physicalDiskID, "sdb");
    EXPECT_EQ(snapshot.volume("/mnt/nas")->isNetwork, true);
    EXPECT_EQ(snapshot.volume("e7c3b1a9-5f2d-4d6e-8b0a-1c9f7e3d5a2b")->mountPoint, "/data");  // not the bind mount
}

TEST(RecordedMachines, ReplayIsRepeatableAndEncodes) {
    Replay first("mac-studio-external-usb");
    Replay second("mac-studio-external-usb");
    EXPECT_EQ(first.snapshot, second.snapshot);
    Json encoded = first.snapshot;
    EXPECT_EQ(encoded.get<StorageSnapshot>(), first.snapshot);
}
