#include "StorageTestSupport.h"
#include "storage/DiskutilParser.h"

#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using ::testing::AllOf;
using ::testing::Eq;
using ::testing::HasSubstr;
using ::testing::Property;
using ::testing::Throws;
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
    return readFixture("machines/" + machine + "/" + file);
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
    const std::pair<const char*, const char*> rows[] = {
        {"disk3s1s1", "disk3"},
        {"disk12", "disk12"},
        {"disk0s2", "disk0"},
        {"disk", "disk"},
        {"diskette", "diskette"},
        {"/dev/disk2", "/dev/disk2"},
        {"", ""},
    };
    for (const auto& [id, whole] : rows) EXPECT_EQ(DiskutilParser::wholeDiskIdentifier(id), whole) << id;
}

TEST(DiskutilParserNumbers, Int64ReadsNumbersOnly) {
    const std::pair<PropertyListValue, std::optional<std::int64_t>> rows[] = {
        {num(994662584320), 994662584320},
        {PropertyListValue::real(-2.9), -2},  // truncated toward zero
        {PropertyListValue::real(1e30), std::nullopt},
        {str("12345"), std::nullopt},
        {flag(true), std::nullopt},
    };
    for (const auto& [value, expected] : rows) EXPECT_EQ(DiskutilParser::int64(&value), expected);
    EXPECT_EQ(DiskutilParser::int64(nullptr), std::nullopt);
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
    EXPECT_THAT([&] { DiskutilParser::parseList(xml(root)); },
                Throws<DiskutilParseError>(
                    AllOf(Eq(DiskutilParseError::missingKey("AllDisksAndPartitions")),
                          Property(&DiskutilParseError::description, HasSubstr("AllDisksAndPartitions")))));
    // A list with a stray non-dictionary is as unusable as no list.
    EXPECT_THROW(DiskutilParser::parseList(listDocument(PropertyListValue::array({dict(), str("disk0")}))),
                 DiskutilParseError);
    EXPECT_THROW(DiskutilParser::parseList(listDocument(str("disk0"))), DiskutilParseError);

    EXPECT_THAT(
        [] { DiskutilParser::parseList(xml(PropertyListValue::array({str("disk0")}))); },
        Throws<DiskutilParseError>(Property(&DiskutilParseError::kind, DiskutilParseError::Kind::notADictionary)));
    EXPECT_THROW(DiskutilParser::parseList("Could not find disk: disk9"), PropertyListError);
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
    EXPECT_TRUE(ejectable(false, true) && ejectable(true, false));
    EXPECT_FALSE(ejectable(false, false) || ejectable(false, std::nullopt) || ejectable(std::nullopt, std::nullopt));
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
    EXPECT_THAT([&] { DiskutilParser::parsePhysicalDisk(xml(info), std::nullopt); },
                Throws<DiskutilParseError>(Eq(DiskutilParseError::missingKey("DeviceIdentifier"))));
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

// Every record read from the recorded machines' disk-tool output, in one reviewed file; each also
// reads back from its own JSON.
TEST(DiskutilParserRecords, RecordedOutputMatchesTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* machine : {"macbook-air-m2", "mac-studio-external-usb"}) {
        const auto listed = DiskutilParser::parseList(fixture(machine, "list-physical.plist"));
        EXPECT_EQ(Json(listed).get<std::vector<ListedDisk>>(), listed) << machine;
        rendered[machine]["list-physical"] = listed;
    }
    const auto listed = DiskutilParser::parseList(fixture("macbook-air-m2", "list-physical.plist")).at(0);
    const auto disk = DiskutilParser::parsePhysicalDisk(fixture("macbook-air-m2", "info-disk0.plist"), listed);
    EXPECT_EQ(disk.partitions, listed.partitions);
    rendered["macbook-air-m2"]["info-disk0"] = disk;
    const auto containers = DiskutilParser::parseAPFSList(fixture("macbook-air-m2", "apfs-list.plist"));
    EXPECT_EQ(Json(containers).get<std::vector<APFSContainer>>(), containers);
    rendered["macbook-air-m2"]["apfs-list"] = containers;
    for (const auto& [machine, file] : {std::pair{"macbook-air-m2", "info-data.plist"},
                                        std::pair{"mac-studio-external-usb", "info-projects.plist"}}) {
        const auto info = DiskutilParser::parseVolumeInfo(fixture(machine, file));
        EXPECT_EQ(Json(info).get<DiskutilVolumeInfo>(), info) << file;
        rendered[machine][file] = info;
    }
    EXPECT_FALSE(Json(DiskutilVolumeInfo{}).contains("volumeName"));
    expectGolden("storage/diskutil.json", rendered);
}
