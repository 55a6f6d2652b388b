#include "StorageTestSupport.h"
#include "storage/DiskutilParser.h"

#include "common/AtomicFile.h"

#include <gtest/gtest.h>

using namespace corvel;
using namespace corvel::testing;

namespace {

PropertyListValue partitionEntry(const std::string& id) {
    PropertyListValue p = dict();
    p.set("DeviceIdentifier", str(id)).set("Content", str("Apple_APFS")).set("Size", num(1000));
    return p;
}

std::string listDocument(PropertyListValue disks) {
    PropertyListValue root = dict();
    root.set("AllDisksAndPartitions", std::move(disks));
    return xml(root);
}

std::string fixture(const std::string& machine, const std::string& file) {
    auto text = AtomicFile::read(machineDirectory(machine) / file);
    if (!text) throw std::runtime_error("missing fixture " + file);
    return *text;
}

ListedDisk listedDisk(std::int64_t size, std::optional<std::string> content = std::nullopt) {
    ListedDisk listed;
    listed.id = "disk4";
    listed.content = std::move(content);
    listed.sizeBytes = size;
    listed.partitions = {Partition{"disk4s1", "EFI", 209715200, "EFI", std::nullopt}};
    return listed;
}

}  // namespace

TEST(DiskutilParserIdentifiers, WholeDiskIdentifier) {
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("disk3s1s1"), "disk3");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("disk12"), "disk12");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("disk0s2"), "disk0");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("disk"), "disk");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("diskette"), "diskette");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier("/dev/disk2"), "/dev/disk2");
    EXPECT_EQ(DiskutilParser::wholeDiskIdentifier(""), "");
}

TEST(DiskutilParserNumbers, Int64ReadsNumbersOnly) {
    auto real = PropertyListValue::real(-2.9);
    auto big = PropertyListValue::real(1e30);
    auto text = str("12345");
    auto yes = flag(true);
    auto integer = num(994662584320);
    EXPECT_EQ(DiskutilParser::int64(&integer), 994662584320);
    EXPECT_EQ(DiskutilParser::int64(&real), -2);  // truncated toward zero
    EXPECT_EQ(DiskutilParser::int64(&big), std::nullopt);
    EXPECT_EQ(DiskutilParser::int64(&text), std::nullopt);
    EXPECT_EQ(DiskutilParser::int64(&yes), std::nullopt);
    EXPECT_EQ(DiskutilParser::int64(nullptr), std::nullopt);
}

TEST(DiskutilParserList, ReadsDisksAndPartitionsInOrder) {
    auto disks = DiskutilParser::parseList(fixture("mac-studio-external-usb", "list-physical.plist"));
    ASSERT_EQ(disks.size(), 2u);
    EXPECT_EQ(disks[0].id, "disk0");
    EXPECT_EQ(disks[1].id, "disk4");
    EXPECT_EQ(disks[1].content, "GUID_partition_scheme");
    EXPECT_EQ(disks[1].sizeBytes, 4000787030016);
    ASSERT_EQ(disks[1].partitions.size(), 3u);
    const Partition& exfat = disks[1].partitions[1];
    EXPECT_EQ(exfat.id, "disk4s2");
    EXPECT_EQ(exfat.content, "Microsoft Basic Data");
    EXPECT_EQ(exfat.sizeBytes, 2000000000000);
    EXPECT_EQ(exfat.volumeName, "Elements");
    EXPECT_EQ(exfat.uuid, "C2E4A6B8-D0F2-4C4E-96B8-D0F2A4C6E8B0");
    EXPECT_EQ(disks[1].partitions[2].volumeName, std::nullopt);  // an APFS store has no volume name
}

TEST(DiskutilParserList, LenientAboutEntriesAndFields) {
    PropertyListValue noID = dict();
    noID.set("Size", num(5));
    PropertyListValue blankName = partitionEntry("disk9s1");
    blankName.set("VolumeName", str(" ")).set("DiskUUID", str("\n  \n"));
    PropertyListValue sparse = dict();
    sparse.set("DeviceIdentifier", str("disk9s2"));  // no content, no size
    PropertyListValue partitionWithoutID = dict();
    partitionWithoutID.set("Content", str("EFI"));
    PropertyListValue disk = dict();
    disk.set("DeviceIdentifier", str("disk9"))
        .set("Size", str("500107862016"))  // numeric text is not a number
        .set("Partitions",
             PropertyListValue::array({blankName, sparse, partitionWithoutID, partitionEntry("disk9s3")}));

    auto disks = DiskutilParser::parseList(listDocument(PropertyListValue::array({noID, disk})));
    ASSERT_EQ(disks.size(), 1u);
    EXPECT_EQ(disks[0].sizeBytes, 0);
    EXPECT_EQ(disks[0].content, std::nullopt);
    ASSERT_EQ(disks[0].partitions.size(), 3u);
    EXPECT_EQ(disks[0].partitions[0].volumeName, std::nullopt);
    EXPECT_EQ(disks[0].partitions[0].uuid, std::nullopt);
    EXPECT_EQ(disks[0].partitions[1], (Partition{"disk9s2", "", 0, std::nullopt, std::nullopt}));
    EXPECT_EQ(disks[0].partitions[2].id, "disk9s3");
}

TEST(DiskutilParserList, DocumentErrors) {
    PropertyListValue root = dict();
    root.set("WholeDisks", PropertyListValue::array({str("disk0")}));
    try {
        DiskutilParser::parseList(xml(root));
        FAIL() << "expected missingKey";
    } catch (const DiskutilParseError& error) {
        EXPECT_EQ(error, DiskutilParseError::missingKey("AllDisksAndPartitions"));
        EXPECT_NE(error.description().find("AllDisksAndPartitions"), std::string::npos);
    }
    // A list with a stray non-dictionary is as unusable as no list.
    EXPECT_THROW(DiskutilParser::parseList(listDocument(PropertyListValue::array({dict(), str("disk0")}))),
                 DiskutilParseError);
    EXPECT_THROW(DiskutilParser::parseList(listDocument(str("disk0"))), DiskutilParseError);

    try {
        DiskutilParser::parseList(xml(PropertyListValue::array({str("disk0")})));
        FAIL() << "expected notADictionary";
    } catch (const DiskutilParseError& error) {
        EXPECT_EQ(error.kind(), DiskutilParseError::Kind::notADictionary);
    }
    EXPECT_THROW(DiskutilParser::parseList("Could not find disk: disk9"), PropertyListError);
}

TEST(DiskutilParserPhysicalDisk, ReadsARealInternalDisk) {
    auto listed = DiskutilParser::parseList(fixture("macbook-air-m2", "list-physical.plist"));
    ASSERT_EQ(listed.size(), 1u);
    PhysicalDisk disk = DiskutilParser::parsePhysicalDisk(fixture("macbook-air-m2", "info-disk0.plist"), listed[0]);
    EXPECT_EQ(disk.id, "disk0");
    EXPECT_EQ(disk.mediaName, "APPLE SSD AP0512Z");
    EXPECT_EQ(disk.sizeBytes, 500277790720);
    EXPECT_EQ(disk.busProtocol, "Apple Fabric");
    EXPECT_TRUE(disk.isInternal);
    EXPECT_FALSE(disk.isEjectable);
    EXPECT_EQ(disk.isSolidState, true);
    EXPECT_EQ(disk.partitionScheme, "GUID_partition_scheme");
    EXPECT_EQ(disk.blockSize, 4096);
    EXPECT_EQ(disk.smartStatus, SMARTStatus::verified);
    ASSERT_TRUE(disk.nvme);
    EXPECT_EQ(disk.nvme->percentageUsed, 3);
    EXPECT_EQ(disk.nvme->dataUnitsWritten, 30123456);
    EXPECT_EQ(disk.nvme->powerOnHours, 1840);
    EXPECT_EQ(disk.partitions, listed[0].partitions);
}

TEST(DiskutilParserPhysicalDisk, MediaNameFallsBackToRegistryNameThenIdentifier) {
    PropertyListValue info = dict();
    info.set("DeviceIdentifier", str("disk4"))
        .set("MediaName", str("  "))
        .set("IORegistryEntryName", str("Elements 25A3"));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).mediaName, "Elements 25A3");
    info.set("IORegistryEntryName", str("\n"));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).mediaName, "disk4");
    info.set("MediaName", str(" Samsung X5 Media "));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).mediaName,
              " Samsung X5 Media ");  // as printed
}

TEST(DiskutilParserPhysicalDisk, SizeFallsBackFromTotalSizeToSizeToTheList) {
    PropertyListValue info = dict();
    info.set("DeviceIdentifier", str("disk4")).set("Size", str("4000787030016"));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), listedDisk(77)).sizeBytes, 77);
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).sizeBytes, 0);
    info.set("Size", num(88));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), listedDisk(77)).sizeBytes, 88);
    info.set("TotalSize", num(99));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), listedDisk(77)).sizeBytes, 99);
}

TEST(DiskutilParserPhysicalDisk, EjectableFromEitherFlag) {
    auto ejectable = [](std::optional<bool> ejectableFlag, std::optional<bool> removable) {
        PropertyListValue info = dict();
        info.set("DeviceIdentifier", str("disk4"));
        if (ejectableFlag) info.set("Ejectable", flag(*ejectableFlag));
        if (removable) info.set("RemovableMedia", flag(*removable));
        return DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).isEjectable;
    };
    EXPECT_TRUE(ejectable(false, true));
    EXPECT_TRUE(ejectable(true, false));
    EXPECT_FALSE(ejectable(false, false));
    EXPECT_FALSE(ejectable(false, std::nullopt));
    EXPECT_FALSE(ejectable(std::nullopt, std::nullopt));
}

TEST(DiskutilParserPhysicalDisk, DefaultsAndListedFallbacks) {
    PropertyListValue info = dict();
    info.set("DeviceIdentifier", str("disk4"))
        .set("BusProtocol", str(" USB \n"))
        .set("SMARTStatus", str("Not Supported"));
    PhysicalDisk disk = DiskutilParser::parsePhysicalDisk(xml(info), listedDisk(10, "GUID_partition_scheme"));
    EXPECT_EQ(disk.busProtocol, "USB");
    EXPECT_FALSE(disk.isInternal);
    EXPECT_EQ(disk.isSolidState, std::nullopt);
    EXPECT_EQ(disk.partitionScheme, "GUID_partition_scheme");  // from the list when the info has none
    EXPECT_EQ(disk.blockSize, std::nullopt);
    EXPECT_EQ(disk.smartStatus, SMARTStatus::notSupported);
    EXPECT_EQ(disk.nvme, std::nullopt);
    EXPECT_EQ(disk.partitions.size(), 1u);

    info.set("Content", str("  "));  // present but blank: no scheme, no fallback
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), listedDisk(10, "GUID_partition_scheme")).partitionScheme,
              std::nullopt);
    info.set("SMARTStatus", num(1));
    EXPECT_EQ(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).smartStatus, SMARTStatus::unknown);
    EXPECT_TRUE(DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt).partitions.empty());
}

TEST(DiskutilParserPhysicalDisk, RequiresAnIdentifier) {
    PropertyListValue info = dict();
    info.set("DeviceIdentifier", num(4));
    EXPECT_EQ(
        [&] {
            try {
                DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt);
            } catch (const DiskutilParseError& error) {
                return error;
            }
            return DiskutilParseError::notADictionary();
        }(),
        DiskutilParseError::missingKey("DeviceIdentifier"));
}

TEST(DiskutilParserNVMe, CountersTemperatureAndLowHalves) {
    PropertyListValue log = dict();
    log.set("TEMPERATURE", num(310)).set("DATA_UNITS_WRITTEN_0", num(1000)).set("DATA_UNITS_WRITTEN_1", num(7));
    log.set("POWER_ON_HOURS", str("12")).set("POWER_ON_HOURS_0", num(12));
    log.set("MEDIA_ERRORS", num(3)).set("MEDIA_ERRORS_0", num(99));
    auto health = DiskutilParser::parseNVMe(log);
    ASSERT_TRUE(health);
    ASSERT_TRUE(health->temperatureCelsius);
    EXPECT_NEAR(*health->temperatureCelsius, 36.85, 1e-9);
    EXPECT_EQ(health->dataUnitsWritten, 1000);
    EXPECT_EQ(health->bytesWritten(), 512000000);
    EXPECT_EQ(health->powerOnHours, 12);  // the key holds text, so the "_0" half is read
    EXPECT_EQ(health->mediaErrors, 3);    // the key itself wins over its half
    EXPECT_EQ(health->percentageUsed, std::nullopt);

    log.set("TEMPERATURE", num(0));
    EXPECT_EQ(DiskutilParser::parseNVMe(log)->temperatureCelsius, std::nullopt);

    EXPECT_EQ(DiskutilParser::parseNVMe(dict()), std::nullopt);
    PropertyListValue unrelated = dict();
    unrelated.set("VENDOR_SPECIFIC", num(1));
    auto empty = DiskutilParser::parseNVMe(unrelated);
    ASSERT_TRUE(empty);  // a non-empty dictionary always gives a record
    EXPECT_EQ(*empty, NVMeHealth{});
}

TEST(DiskutilParserVolumeInfo, ReadsARealAPFSVolume) {
    DiskutilVolumeInfo info =
        DiskutilParser::parseVolumeInfo(fixture("mac-studio-external-usb", "info-projects.plist"));
    EXPECT_EQ(info.deviceIdentifier, "disk5s1");
    EXPECT_EQ(info.volumeName, "Projects");
    EXPECT_EQ(info.mountPoint, "/Volumes/Projects");
    EXPECT_EQ(info.fileSystemType, "apfs");
    EXPECT_EQ(info.fileSystemName, "APFS");
    EXPECT_EQ(info.busProtocol, "USB");
    EXPECT_EQ(info.isInternal, false);
    EXPECT_EQ(info.isEjectable, true);
    EXPECT_EQ(info.isWritable, true);
    EXPECT_EQ(info.isEncrypted, false);
    EXPECT_EQ(info.ownershipEnabled, false);
    EXPECT_EQ(info.parentWholeDisk, "disk5");
    EXPECT_EQ(info.containerReference, "disk5");
    EXPECT_EQ(info.containerFreeBytes, 1187654321664);
    EXPECT_EQ(info.physicalStores, std::vector<std::string>{"disk4s3"});
}

TEST(DiskutilParserVolumeInfo, EncryptionFallsBackToFileVault) {
    PropertyListValue root = dict();
    root.set("FileVault", flag(true));
    auto info = DiskutilParser::parseVolumeInfo(xml(root));
    EXPECT_EQ(info.isEncrypted, true);
    EXPECT_EQ(info.isFileVault, true);
    root.set("Encryption", str("yes"));  // not a boolean: still the FileVault answer
    EXPECT_EQ(DiskutilParser::parseVolumeInfo(xml(root)).isEncrypted, true);
    root.set("Encryption", flag(false));
    EXPECT_EQ(DiskutilParser::parseVolumeInfo(xml(root)).isEncrypted, false);
}

TEST(DiskutilParserVolumeInfo, EverythingOptional) {
    EXPECT_EQ(DiskutilParser::parseVolumeInfo(xml(dict())), DiskutilVolumeInfo{});
    PropertyListValue root = dict();
    PropertyListValue storeWithout = dict();
    storeWithout.set("Other", str("x"));
    PropertyListValue store = dict();
    store.set("APFSPhysicalStore", str("disk0s2"));
    root.set("VolumeName", str("   "))
        .set("Internal", str("Yes"))
        .set("APFSContainerFree", str("1"))
        .set("APFSPhysicalStores", PropertyListValue::array({storeWithout, store}));
    auto info = DiskutilParser::parseVolumeInfo(xml(root));
    EXPECT_EQ(info.volumeName, std::nullopt);
    EXPECT_EQ(info.isInternal, std::nullopt);
    EXPECT_EQ(info.containerFreeBytes, std::nullopt);
    EXPECT_EQ(info.physicalStores, std::vector<std::string>{"disk0s2"});
    EXPECT_THROW(DiskutilParser::parseVolumeInfo(xml(str("x"))), DiskutilParseError);
}

TEST(DiskutilParserAPFS, ReadsContainersAndVolumes) {
    auto containers = DiskutilParser::parseAPFSList(fixture("macbook-air-m2", "apfs-list.plist"));
    ASSERT_EQ(containers.size(), 3u);
    const APFSContainer& main = containers[1];
    EXPECT_EQ(main.id, "disk3");
    EXPECT_EQ(main.uuid, "E6A8C0B2-4D6F-4B8A-9C0E-2A4C6E8A0C2E");
    EXPECT_EQ(main.capacityCeiling, 494384795648);
    EXPECT_EQ(main.capacityFree, 201234567168);
    EXPECT_EQ(main.physicalStores, std::vector<std::string>{"disk0s2"});
    ASSERT_EQ(main.volumes.size(), 6u);
    std::vector<std::string> roles;
    for (const auto& volume : main.volumes) roles.push_back(volume.roles.empty() ? "" : volume.roles[0]);
    EXPECT_EQ(roles, (std::vector<std::string>{"System", "Preboot", "Recovery", "Update", "Data", "VM"}));
    const APFSVolumeEntry& data = main.volumes[4];
    EXPECT_EQ(data.name, "Macintosh HD - Data");
    EXPECT_TRUE(data.isEncrypted);
    EXPECT_TRUE(data.isFileVault);
    EXPECT_FALSE(data.isLocked);
    EXPECT_EQ(data.capacityInUse, 268950552576);
}

TEST(DiskutilParserAPFS, DefaultsAndSkippedEntries) {
    PropertyListValue unnamed = dict();
    unnamed.set("DeviceIdentifier", str("disk5s1"));
    PropertyListValue nameless = dict();
    nameless.set("Name", str("No id"));
    PropertyListValue container = dict();
    container.set("ContainerReference", str("disk5"))
        .set("APFSContainerUUID", str(" "))
        .set("Volumes", PropertyListValue::array({nameless, unnamed}));
    PropertyListValue orphan = dict();
    orphan.set("CapacityCeiling", num(1));
    PropertyListValue root = dict();
    root.set("Containers", PropertyListValue::array({orphan, container}));

    auto containers = DiskutilParser::parseAPFSList(xml(root));
    ASSERT_EQ(containers.size(), 1u);
    EXPECT_EQ(containers[0].uuid, std::nullopt);
    EXPECT_EQ(containers[0].capacityCeiling, 0);
    ASSERT_EQ(containers[0].volumes.size(), 1u);
    EXPECT_EQ(containers[0].volumes[0],
              (APFSVolumeEntry{"disk5s1", std::nullopt, "disk5s1", {}, 0, false, false, false}));

    PropertyListValue wrong = dict();
    wrong.set("Containers", str("disk5"));
    EXPECT_THROW(DiskutilParser::parseAPFSList(xml(wrong)), DiskutilParseError);
}

TEST(DiskutilParserRecords, JSONRoundTrip) {
    auto containers = DiskutilParser::parseAPFSList(fixture("macbook-air-m2", "apfs-list.plist"));
    EXPECT_EQ(Json(containers).get<std::vector<APFSContainer>>(), containers);
    auto info = DiskutilParser::parseVolumeInfo(fixture("macbook-air-m2", "info-data.plist"));
    Json encoded = info;
    EXPECT_EQ(encoded.get<DiskutilVolumeInfo>(), info);
    EXPECT_EQ(encoded.at("deviceIdentifier"), "disk3s5");
    EXPECT_FALSE(Json(DiskutilVolumeInfo{}).contains("volumeName"));
    auto listed = DiskutilParser::parseList(fixture("macbook-air-m2", "list-physical.plist"));
    EXPECT_EQ(Json(listed).get<std::vector<ListedDisk>>(), listed);
}
