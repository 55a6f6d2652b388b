#include "StorageTestSupport.h"
#include "storage/BoundedMountTable.h"
#include "storage/LinuxBlockDevices.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/LsblkClient.h"
#include "storage/LsblkParser.h"
#include "storage/RecordedMountTable.h"
#include "storage/SmartctlClient.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <map>

using namespace corvel;
using namespace corvel::testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

namespace {

const TimePoint now = *ISO8601::parse("2026-11-04T14:20:00Z");

class FakeMountTable : public MountTableReading {
public:
    std::string text;
    bool readable = true;
    std::map<std::string, StatvfsFigures> figures;

    std::string mountInfo() override {
        if (!readable) throw std::runtime_error("cannot open /proc/self/mountinfo");
        return text;
    }
    StatvfsFigures statvfs(const std::string& mountPoint) override {
        auto it = figures.find(mountPoint);
        if (it == figures.end()) throw std::runtime_error(mountPoint + ": Stale file handle");
        return it->second;
    }
};

// A laptop: NVMe with a crypt layer and LVM, a USB disk, plus the virtual devices lsblk also lists.
const char* lsblk = R"({"blockdevices": [
  {"name": "loop0", "kname": "loop0", "maj:min": "7:0", "type": "loop", "size": 77844480},
  {"name": "zram0", "kname": "zram0", "maj:min": "252:0", "type": "disk", "size": 8589934592},
  {"name": "ram0", "kname": "ram0", "maj:min": "1:0", "type": "disk", "size": 4194304},
  {"name": "sr0", "kname": "sr0", "maj:min": "11:0", "type": "rom", "size": 1073741312},
  {"name": "sdb", "kname": "sdb", "path": "/dev/sdb", "maj:min": "8:16", "type": "disk", "size": 2000398934016,
   "vendor": "WD      ", "model": "Elements 25A3", "tran": "usb", "rota": true, "rm": false, "hotplug": true,
   "pttype": "gpt", "phy-sec": 4096,
   "children": [{"name": "sdb1", "kname": "sdb1", "path": "/dev/sdb1", "maj:min": "8:17", "type": "part",
                 "size": 2000397795328, "fstype": "ntfs", "label": "Elements", "uuid": "5A1C3E", "partuuid": "p-sdb1",
                 "parttypename": "Microsoft basic data"}]},
  {"name": "nvme0n1", "kname": "nvme0n1", "path": "/dev/nvme0n1", "maj:min": "259:0", "type": "disk",
   "size": 512110190592, "vendor": null, "model": "WDC PC SN730", "tran": "nvme", "rota": false, "rm": false,
   "hotplug": false, "pttype": "gpt", "phy-sec": 512,
   "children": [
     {"name": "nvme0n1p1", "kname": "nvme0n1p1", "path": "/dev/nvme0n1p1", "maj:min": "259:1", "type": "part",
      "size": 536870912, "fstype": "vfat", "uuid": "4A1E-9C2B", "partuuid": "p1", "parttypename": "EFI System"},
     {"name": "nvme0n1p2", "kname": "nvme0n1p2", "path": "/dev/nvme0n1p2", "maj:min": "259:2", "type": "part",
      "size": 511571222528, "fstype": "crypto_LUKS", "uuid": "luks", "partuuid": "p2",
      "children": [
        {"name": "cryptroot", "kname": "dm-0", "path": "/dev/mapper/cryptroot", "maj:min": "253:0", "type": "crypt",
         "size": 511554445312, "fstype": "LVM2_member",
         "children": [
           {"name": "vg-root", "kname": "dm-1", "path": "/dev/mapper/vg-root", "maj:min": "253:1", "type": "lvm",
            "size": 100000000000, "fstype": "btrfs", "uuid": "root-uuid", "label": "system"}]}]}]}
]})";

const char* mountinfo =
    "22 28 0:21 / /sys rw,nosuid - sysfs sysfs rw\n"
    "26 28 0:24 / /run rw,nosuid - tmpfs tmpfs rw\n"
    "28 1 0:30 /@ / rw,relatime - btrfs /dev/mapper/vg-root rw,subvol=/@\n"
    "31 28 0:30 /@home /home rw,relatime - btrfs /dev/mapper/vg-root rw,subvol=/@home\n"
    "33 28 259:1 / /boot/efi rw - vfat /dev/nvme0n1p1 rw\n"
    "40 28 7:0 / /snap/core/1 ro - squashfs /dev/loop0 ro\n"
    "44 28 8:17 / /media/me/Elements rw,nosuid - fuseblk /dev/sdb1 rw,user_id=0\n"
    "50 28 0:48 / /mnt/share rw - cifs //nas/share rw\n"
    "52 28 0:49 / /mnt/old rw - nfs nas:/old rw\n"
    "60 28 0:60 / /var/lib/docker/overlay2/x/merged rw - overlay overlay rw\n";

struct Laptop {
    ScriptedRunner runner;
    FakeMountTable table;

    Laptop() {
        runner.answer(LsblkClient::executable, {"-J", "-b", "-O"}, lsblk);
        runner.answer(
            SmartctlClient::executable, {"-j", "-a", "/dev/nvme0n1"},
            R"({"smart_status": {"passed": true}, "nvme_smart_health_information_log": {"percentage_used": 9}})");
        runner.answer(SmartctlClient::executable, {"-j", "-a", "/dev/sdb"},
                      CommandError::failed(2, R"({"smartctl": {"exit_status": 2}})"));
        table.text = mountinfo;
        table.figures = {{"/", {100000000000, 30000000000, 25000000000}},
                         {"/boot/efi", {535805952, 529817600, 529817600}},
                         {"/media/me/Elements", {2000397795328, 1000000000000, 1000000000000}},
                         {"/mnt/share", {8000000000000, 2000000000000, 2000000000000}}};
    }

    StorageSnapshot snapshot() { return LinuxStorageDiscovery(runner, table).snapshot(now); }
};

std::vector<std::string> mountPoints(const StorageSnapshot& snapshot) {
    std::vector<std::string> result;
    for (const auto& volume : snapshot.volumes) result.push_back(volume.mountPoint);
    return result;
}

}  // namespace

TEST(LinuxBlockDevices, WholeDisksOnly) {
    auto devices = LsblkParser::parse(lsblk);
    std::vector<std::string> disks;
    for (const auto& device : devices) {
        if (LinuxBlockDevices::isPhysicalDisk(device)) disks.push_back(device.kernelName);
    }
    EXPECT_EQ(disks, (std::vector<std::string>{"sdb", "nvme0n1"}));
}

TEST(LinuxBlockDevices, DiskRecordFromLsblk) {
    auto devices = LsblkParser::parse(lsblk);
    const PhysicalDisk usb = LinuxBlockDevices::makePhysicalDisk(devices[4]);
    EXPECT_EQ(usb, (PhysicalDisk{"sdb",
                                 "WD Elements 25A3",
                                 2000398934016,
                                 "USB",
                                 false,
                                 true,
                                 false,
                                 "GPT",
                                 4096,
                                 SMARTStatus::unknown,
                                 std::nullopt,
                                 {{"sdb1", "Microsoft basic data", 2000397795328, "Elements", "p-sdb1"}}}));
    EXPECT_EQ(usb.connectionLabel(), "External · USB");

    PhysicalDisk nvme = LinuxBlockDevices::makePhysicalDisk(devices[5]);
    EXPECT_EQ(nvme.mediaName, "WDC PC SN730");
    EXPECT_TRUE(nvme.isInternal);
    EXPECT_EQ(nvme.isSolidState, true);
    EXPECT_EQ(nvme.connectionLabel(), "Internal · NVMe");
    EXPECT_EQ(nvme.partitions.size(), 2u);  // the crypt mapping under p2 is not a partition
}

TEST(LinuxBlockDevices, NamesAndBuses) {
    BlockDevice device;
    device.kernelName = "sda";
    device.vendor = "ATA";
    device.model = "Samsung SSD 870";
    EXPECT_EQ(LinuxBlockDevices::makePhysicalDisk(device).mediaName, "Samsung SSD 870");  // bus, not a maker
    device.vendor = "Samsung";
    EXPECT_EQ(LinuxBlockDevices::makePhysicalDisk(device).mediaName, "Samsung SSD 870");  // not repeated
    device.vendor = "0x1af4";
    device.model.reset();
    EXPECT_EQ(LinuxBlockDevices::makePhysicalDisk(device).displayName(), "sda");
    device.subsystems = "block:virtio:pci";
    EXPECT_EQ(LinuxBlockDevices::busProtocol(device), "VirtIO");
    for (const auto& [transport, bus] : {std::pair{"spi", "SPI"}, {"ieee1394", "IEEE1394"}}) {
        device.transport = transport;
        EXPECT_EQ(LinuxBlockDevices::busProtocol(device), bus);
    }
    device.isRemovable = true;  // an SD card reader: removable medium, not part of the machine
    device.transport = "mmc";
    EXPECT_FALSE(LinuxBlockDevices::makePhysicalDisk(device).isInternal);
}

// By device numbers, else by the source path (btrfs hides its numbers), by UUID or by label.
TEST(LinuxBlockDevices, LocateWalksTheStackToTheWholeDisk) {
    const auto devices = LsblkParser::parse(lsblk);
    const struct {
        const char* line;
        const char* top;
        const char* device;
        std::size_t chain;
        bool crypt;
    } rows[] = {
        {"33 28 259:1 / /boot/efi rw - vfat /dev/nvme0n1p1 rw", "nvme0n1", "nvme0n1p1", 2, false},
        {"28 1 0:30 /@ / rw - btrfs /dev/mapper/vg-root rw", "nvme0n1", "dm-1", 4, true},
        {"33 28 0:99 / /efi rw - vfat /dev/disk/by-uuid/4A1E-9C2B rw", "nvme0n1", "nvme0n1p1", 2, false},
        {"34 28 0:98 / /x rw - ntfs3 /dev/disk/by-label/Elements rw", "sdb", "sdb1", 2, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        const auto stack = LinuxBlockDevices::locate(devices, *MountInfoEntry::parseLine(row.line));
        ASSERT_TRUE(stack);
        EXPECT_EQ(stack->device().kernelName, row.device);
        EXPECT_EQ(stack->top().kernelName, row.top);
        EXPECT_EQ(stack->chain.size(), row.chain);
        EXPECT_EQ(stack->hasCryptLayer(), row.crypt);
    }
    for (const char* line :
         {"50 28 0:48 / /m rw - cifs //nas/s rw", "51 28 0:47 / /n rw - ext4 /dev/disk/by-uuid/missing rw"})
        EXPECT_FALSE(LinuxBlockDevices::locate(devices, *MountInfoEntry::parseLine(line))) << line;
}

TEST(LinuxStorageDiscoverySelect, RealFileSystemsEachOnce) {
    auto selected = LinuxStorageDiscovery::selectMounts(
        MountInfoEntry::parse("65 28 8:1 / /data rw - xfs /dev/sda1 rw\n"
                              "95 63 8:1 /projects /home/me/projects rw - xfs /dev/sda1 rw\n"
                              "96 28 8:2 /sub /bind-first rw - ext4 /dev/sda2 rw\n"
                              "97 28 8:2 / /whole-later rw - ext4 /dev/sda2 rw\n"
                              "98 28 0:20 / /run tmpfs rw - tmpfs tmpfs rw\n"
                              "28 1 0:19 / / rw - overlay overlay rw\n"));
    std::vector<std::string> points;
    for (const auto& mount : selected) points.push_back(mount.mountPoint);
    // The bind mount collapses onto /data; a later mount of the whole file system replaces an
    // earlier view of a sub-directory; an overlay root is still the root.
    EXPECT_EQ(points, (std::vector<std::string>{"/data", "/whole-later", "/"}));
    EXPECT_TRUE(LinuxStorageDiscovery::isNetworkFileSystem("nfs4"));
    EXPECT_TRUE(LinuxStorageDiscovery::isNetworkFileSystem("fuse.sshfs"));
    EXPECT_FALSE(LinuxStorageDiscovery::isNetworkFileSystem("ext4"));
    EXPECT_EQ(LinuxStorageDiscovery::supportsCaseSensitiveNames("exfat"), false);
    EXPECT_EQ(LinuxStorageDiscovery::supportsCaseSensitiveNames("xfs"), true);
    EXPECT_EQ(LinuxStorageDiscovery::supportsCaseSensitiveNames("ntfs"), std::nullopt);
}

// The laptop's whole snapshot in one reviewed file: internal disk first with its SMART verdict and
// wear, the USB disk's failed smartctl an unknown verdict without a warning; the root volume found
// through LVM on a crypt mapping, its reserve neither used nor room; fuseblk resolved through
// lsblk; the share on no disk; /home one file system with /; /mnt/old unmeasured, with a warning.
TEST(LinuxStorageDiscoverySnapshot, DisksVolumesAndTheirJoin) {
    const StorageSnapshot snapshot = Laptop().snapshot();
    EXPECT_EQ(snapshot.capturedAt, now);
    EXPECT_EQ(mountPoints(snapshot),
              (std::vector<std::string>{"/", "/media/me/Elements", "/boot/efi", "/mnt/old", "/mnt/share"}));
    expectGolden("storage/linux-laptop.json", snapshot);
}

TEST(LinuxStorageDiscoverySnapshot, NothingReadableStillGivesASnapshot) {
    ScriptedRunner runner;
    FakeMountTable table;
    table.readable = false;
    StorageSnapshot snapshot = LinuxStorageDiscovery(runner, table).snapshot(now);
    EXPECT_TRUE(snapshot.disks.empty());
    EXPECT_TRUE(snapshot.volumes.empty());
    EXPECT_EQ(snapshot.warnings,
              (std::vector<std::string>{"Could not list physical disks: Could not launch command: no recording",
                                        "Could not list mounted volumes: cannot open /proc/self/mountinfo"}));

    runner.answer(LsblkClient::executable, {"-J", "-b", "-O"}, "lsblk: not JSON");
    table.readable = true;
    table.text = "28 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
    table.figures["/"] = {10, 5, 4};
    snapshot = LinuxStorageDiscovery(runner, table).snapshot(now);
    EXPECT_THAT(snapshot.warnings,
                ElementsAre(StartsWith("Could not list physical disks: lsblk output: not valid JSON")));
    ASSERT_EQ(snapshot.volumes.size(), 1u);
    EXPECT_EQ(snapshot.volumes[0].name, "Root");
    EXPECT_EQ(snapshot.volumes[0].physicalDiskID, std::nullopt);
}

TEST(LinuxStorageDiscoverySnapshot, SmartctlIsAskedReadOnlyAndOnlyAboutDisks) {
    Laptop laptop;
    laptop.snapshot();
    std::vector<std::vector<std::string>> smartCalls;
    for (const auto& [executable, arguments] : laptop.runner.calls) {
        if (executable == SmartctlClient::executable) smartCalls.push_back(arguments);
    }
    EXPECT_EQ(smartCalls,
              (std::vector<std::vector<std::string>>{{"-j", "-a", "/dev/sdb"}, {"-j", "-a", "/dev/nvme0n1"}}));
    EXPECT_FALSE(SmartctlClient::policy().permits({"-s", "on", "/dev/sda"}));
    EXPECT_FALSE(SmartctlClient::policy().permits({"-t", "long", "/dev/sda"}));
    EXPECT_EQ(SmartctlClient{laptop.runner}.report("-d sat /dev/sda"), SmartctlReport{});
}

TEST(RecordedMountTable, ReplaysTextOrLinesAndRejectsBadShapes) {
    Json document = {{"mountinfo", {"28 1 8:1 / / rw - ext4 /dev/sda1 rw", "29 28 8:2 / /home rw - ext4 /dev/sda2 rw"}},
                     {"statvfs", {{"/", {{"totalBytes", 10}, {"freeBytes", 6}, {"availableBytes", 5}}}}}};
    RecordedMountTable table(document);
    EXPECT_EQ(MountInfoEntry::parse(table.mountInfo()).size(), 2u);
    EXPECT_EQ(table.statvfs("/"), (StatvfsFigures{10, 6, 5}));
    EXPECT_THROW(table.statvfs("/home"), std::runtime_error);

    RecordedMountTable asText(Json{{"mountinfo", "28 1 8:1 / / rw - ext4 /dev/sda1 rw\n"}});
    EXPECT_EQ(MountInfoEntry::parse(asText.mountInfo()).size(), 1u);

    RecordedMountTable missing(Json::object());
    EXPECT_THROW(missing.mountInfo(), std::runtime_error);

    RecordedMountTable wrong(Json{{"mountinfo", 5}});
    EXPECT_THAT([&] { wrong.mountInfo(); }, ThrowsMessage<std::runtime_error>(HasSubstr("mountinfo")));
    RecordedMountTable badFigures(Json{{"mountinfo", ""}, {"statvfs", {{"/", {{"totalBytes", "ten"}}}}}});
    EXPECT_THROW(badFigures.mountInfo(), std::runtime_error);
}

// A hard NFS mount whose server is gone: statvfs never returns. Discovery must still finish.
TEST(LinuxStorageDiscoverySnapshot, AMountThatNeverAnswersBecomesAWarningWithinTheLimit) {
    struct HangingTable : FakeMountTable {
        std::shared_ptr<std::promise<void>> release = std::make_shared<std::promise<void>>();
        std::shared_future<void> released = release->get_future().share();
        StatvfsFigures statvfs(const std::string& mountPoint) override {
            if (mountPoint == "/mnt/old") released.wait();  // until the test ends
            return FakeMountTable::statvfs(mountPoint);
        }
    };
    auto table = std::make_shared<HangingTable>();
    table->text = "28 1 8:1 / / rw - ext4 /dev/sda1 rw\n52 28 0:49 / /mnt/old rw - nfs nas:/old rw\n";
    table->figures["/"] = {10, 5, 4};
    ScriptedRunner runner;
    BoundedMountTable bounded(table, std::chrono::milliseconds(200));
    const auto started = std::chrono::steady_clock::now();
    const StorageSnapshot snapshot = LinuxStorageDiscovery(runner, bounded).snapshot(now);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
    EXPECT_THAT(snapshot.warnings, Contains("Could not read the capacity of /mnt/old: did not answer within 200 ms"));
    EXPECT_EQ(snapshot.volumes.size(), 2u);  // both listed; the silent one without figures
    table->release->set_value();
}
