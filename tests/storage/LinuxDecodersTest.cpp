// The pure decoders of the Linux discovery, each on literal samples of the tools' output.
#include "StorageTestSupport.h"
#include "storage/LsblkParser.h"
#include "storage/MountInfoEntry.h"
#include "storage/SmartctlReport.h"

#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using namespace corvel::testing;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

TEST(LsblkParser, ReadsTypedOutputWithNestedDevices) {
    const char* sample = R"({"blockdevices": [
      {"name": "nvme0n1", "kname": "nvme0n1", "path": "/dev/nvme0n1", "maj:min": "259:0", "type": "disk",
       "size": 1000204886016, "model": "Samsung SSD 980 PRO 1TB", "vendor": null, "tran": "nvme", "rota": false,
       "rm": false, "hotplug": false, "ro": false, "phy-sec": 512, "pttype": "gpt", "mountpoints": [null],
       "children": [
         {"name": "nvme0n1p3", "kname": "nvme0n1p3", "path": "/dev/nvme0n1p3", "maj:min": "259:3", "type": "part",
          "size": 998592708608, "fstype": "crypto_LUKS", "partuuid": "8d4a", "parttypename": "Linux filesystem",
          "children": [
            {"name": "root", "kname": "dm-0", "path": "/dev/mapper/root", "maj:min": "253:0", "type": "crypt",
             "size": 998575931392, "fstype": "ext4", "uuid": "2b9e", "label": "  ", "mountpoints": ["/", "/srv"]}]}]},
      {"kname": "nameless", "type": "disk"},
      "not an object"
    ]})";
    // The nameless entry and the non-object are left out; a blank label is absent.
    expectGolden("storage/lsblk-typed.json", LsblkParser::parse(sample));
}

TEST(LsblkParser, ReadsOlderAllTextOutput) {
    // util-linux before 2.37 quotes every value and has a single "mountpoint".
    const char* sample = R"({"blockdevices": [
      {"name": "sda", "maj:min": "8:0", "rm": "1", "size": "61530439680", "ro": "0", "type": "disk",
       "mountpoint": null, "vendor": "SanDisk ", "model": "Ultra Fit       ", "tran": "usb", "rota": "1",
       "hotplug": "1", "phy-sec": "512",
       "children": [{"name": "sda1", "maj:min": "8:1", "size": "61529390080", "type": "part",
                     "mountpoint": "/media/me/STICK", "fstype": "exfat"}]}]})";
    // Quoted numbers and flags are read, padding trimmed, the kernel name and path filled in.
    expectGolden("storage/lsblk-text.json", LsblkParser::parse(sample));
}

TEST(LsblkParser, BadDocumentsNameTheInput) {
    for (const char* bad : {"lsblk: unknown column", "[]", "{\"devices\": []}", "{\"blockdevices\": {}}"})
        EXPECT_THAT([&] { LsblkParser::parse(bad); }, ThrowsMessage<DecodingError>(HasSubstr("lsblk output"))) << bad;
    // Odd values are absent, not errors.
    auto devices = LsblkParser::parse(R"({"blockdevices": [{"name": "sdz", "size": "12x", "rota": "yes",
                                          "phy-sec": -1, "children": "none"}]})");
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0].sizeBytes, 0);
    EXPECT_EQ(devices[0].isRotational, std::nullopt);
    EXPECT_EQ(devices[0].physicalSectorSize, std::nullopt);
    EXPECT_TRUE(devices[0].children.empty());
}

TEST(MountInfo, ParsesALineWithOptionalTags) {
    auto entry = MountInfoEntry::parseLine(
        "36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 shared:7 - ext3 /dev/root rw,errors=continue");
    ASSERT_TRUE(entry);
    EXPECT_EQ(*entry, (MountInfoEntry{36,
                                      35,
                                      "98:0",
                                      "/mnt1",
                                      "/mnt/parent",
                                      {"rw", "noatime"},
                                      "ext3",
                                      "/dev/root",
                                      {"rw", "errors=continue"}}));
    EXPECT_FALSE(entry->isReadOnly());
}

TEST(MountInfo, UndoesEscapesInPaths) {
    auto entry =
        MountInfoEntry::parseLine("112 28 8:17 / /media/me/USB\\040STICK\\011tab\\134back rw - exfat /dev/sdb1 rw");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->mountPoint, "/media/me/USB STICK\ttab\\back");
    EXPECT_EQ(MountInfoEntry::unescape("a\\04"), "a\\04");      // too short to be an escape
    EXPECT_EQ(MountInfoEntry::unescape("a\\0x0b"), "a\\0x0b");  // not octal
    EXPECT_EQ(MountInfoEntry::unescape("\\777"), "\\777");      // beyond a byte
}

TEST(MountInfo, ReadOnlyFromMountOrSuperOptions) {
    EXPECT_TRUE(MountInfoEntry::parseLine("70 28 7:0 / /snap/x ro,nodev - squashfs /dev/loop0 ro")->isReadOnly());
    EXPECT_TRUE(MountInfoEntry::parseLine("71 28 8:1 / /data rw - xfs /dev/sda1 ro,attr2")->isReadOnly());
    EXPECT_FALSE(MountInfoEntry::parseLine("72 28 8:1 / /data rw,errors=ro - xfs /dev/sda1 rw")->isReadOnly());
}

TEST(MountInfo, MalformedLinesAreSkippedAndCounted) {
    const std::string text =
        "28 1 253:1 / / rw,relatime shared:1 - ext4 /dev/mapper/vg0-root rw\n"
        "\n"
        "garbage\n"
        "29 28 0:6 / /sys rw\n"                   // no separator
        "30 28 x:y / /bad rw - tmpfs tmpfs rw\n"  // device numbers
        "31 28 0:7 / /short rw - tmpfs\n"         // missing fields after the separator
        "32 28 0:8 / /ok rw - tmpfs tmpfs rw";    // no final newline
    int skipped = -1;
    auto entries = MountInfoEntry::parse(text, &skipped);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].mountPoint, "/");
    EXPECT_EQ(entries[1].mountPoint, "/ok");
    EXPECT_EQ(skipped, 4);
}

TEST(SmartctlReport, NVMeVerdictAndHealthLog) {
    SmartctlReport report = SmartctlReport::decode(readFixture("machines/linux-workstation/smartctl-nvme0n1.json"));
    EXPECT_EQ(report.smartStatus, SMARTStatus::verified);
    ASSERT_TRUE(report.nvme);
    EXPECT_EQ(*report.nvme, (NVMeHealth{2, 100, 10, 41.0, 0, 0, 6213, 1043, 61, 38921734, 52367810}));
}

TEST(SmartctlReport, VerdictsAndFallbacks) {
    for (const auto& [text, status] : {std::pair{R"({"smart_status": {"passed": false}})", SMARTStatus::failing},
                                       {R"({"smart_support": {"available": false}})", SMARTStatus::notSupported},
                                       {R"({"smart_support": {"available": true}})", SMARTStatus::unknown},
                                       {R"({"smart_status": {"passed": "yes"}})", SMARTStatus::unknown}})
        EXPECT_EQ(SmartctlReport::decode(text).smartStatus, status) << text;
    EXPECT_EQ(SmartctlReport::decode("Permission denied"), SmartctlReport{});
    EXPECT_EQ(SmartctlReport::decode("[1, 2]"), SmartctlReport{});
    auto sata =
        SmartctlReport::decode(R"({"smart_status": {"passed": true}, "nvme_smart_health_information_log": {}})");
    EXPECT_EQ(sata.smartStatus, SMARTStatus::verified);
    EXPECT_EQ(sata.nvme, std::nullopt);
}
