#include "StorageTestSupport.h"
#include "storage/StorageDiscovery.h"

#include "command/DiskutilClient.h"
#include "storage/DiskutilParseError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace corvel;
using namespace corvel::testing;
using ::testing::ElementsAre;
using ::testing::StartsWith;

namespace {

const std::string diskutil = DiskutilClient::executable;
const TimePoint now = *ISO8601::parse("2026-11-02T09:30:00Z");

PropertyListValue listEntry(const std::string& id) {
    PropertyListValue entry = dict();
    entry.set("DeviceIdentifier", str(id)).set("Size", num(1000));
    return entry;
}

std::string list(std::vector<std::string> ids) {
    PropertyListValue disks = PropertyListValue::array();
    for (const auto& id : ids) disks.append(listEntry(id));
    PropertyListValue root = dict();
    root.set("AllDisksAndPartitions", disks);
    return xml(root);
}

std::string diskInfo(const std::string& id, bool internal) {
    PropertyListValue root = dict();
    root.set("DeviceIdentifier", str(id)).set("MediaName", str(id + " Media")).set("Internal", flag(internal));
    return xml(root);
}

MountedVolumeRecord record(const std::string& path, const std::string& name) {
    MountedVolumeRecord r;
    r.path = path;
    r.name = name;
    r.totalBytes = 1000;
    r.availableBytes = 400;
    return r;
}

DiskutilVolumeInfo apfsInfo() {
    DiskutilVolumeInfo info;
    info.deviceIdentifier = "disk3s5";
    info.volumeName = "Macintosh HD - Data";
    info.volumeUUID = "DATA-UUID";
    info.fileSystemType = "apfs";
    info.fileSystemName = "APFS";
    info.busProtocol = "Apple Fabric";
    info.isInternal = true;
    info.isEjectable = false;
    info.isEncrypted = true;
    info.ownershipEnabled = true;
    info.parentWholeDisk = "disk3";
    info.containerReference = "disk3";
    info.physicalStores = {"disk0s2"};
    return info;
}

struct Machine {
    ScriptedRunner runner;
    std::vector<MountedVolumeRecord> volumes;

    StorageSnapshot snapshot() {
        FixedVolumeProvider provider(volumes);
        return StorageDiscovery(runner, provider).snapshot(now);
    }
};

}  // namespace

TEST(StorageDiscoverySnapshot, WithoutTheDiskToolVolumesStillAppearUnassigned) {
    Machine machine;
    machine.volumes = {record("/", "Macintosh HD"), record("/Volumes/USB", "USB")};
    StorageSnapshot snapshot = machine.snapshot();
    EXPECT_EQ(snapshot.capturedAt, now);
    EXPECT_TRUE(snapshot.disks.empty());
    EXPECT_THAT(snapshot.warnings,
                ElementsAre("Could not list physical disks: Could not launch command: no recording"));
    EXPECT_EQ(snapshot.volumes.size(), 2u);
    EXPECT_EQ(snapshot.unassignedVolumes().size(), 2u);
}

TEST(StorageDiscoverySnapshot, UnreadableListIsAWarningWithTheParserText) {
    Machine machine;
    machine.runner.answer(diskutil, {"list", "-plist", "physical"}, xml(dict()));
    StorageSnapshot snapshot = machine.snapshot();
    EXPECT_THAT(snapshot.warnings, ElementsAre("Could not list physical disks: " +
                                               DiskutilParseError::missingKey("AllDisksAndPartitions").description()));
}

TEST(StorageDiscoverySnapshot, OneDiskTimingOutLeavesTheOthers) {
    Machine machine;
    machine.runner.answer(diskutil, {"list", "-plist", "physical"}, list({"disk0", "disk4", "disk6"}));
    machine.runner.answer(diskutil, {"info", "-plist", "disk0"}, diskInfo("disk0", true));
    machine.runner.answer(diskutil, {"info", "-plist", "disk4"}, CommandError::timedOut());
    machine.runner.answer(diskutil, {"info", "-plist", "disk6"}, "garbage");
    StorageSnapshot snapshot = machine.snapshot();
    ASSERT_EQ(snapshot.disks.size(), 1u);
    EXPECT_EQ(snapshot.disks[0].id, "disk0");
    EXPECT_EQ(snapshot.disks[0].sizeBytes, 1000);  // from the list entry
    EXPECT_THAT(snapshot.warnings, ElementsAre("Could not read details for disk4: Command timed out",
                                               StartsWith("Could not read details for disk6: ")));
}

TEST(StorageDiscoverySnapshot, NetworkSharesNeverReachTheDiskTool) {
    Machine machine;
    MountedVolumeRecord share = record("/Volumes/media", "media");
    share.isLocal = false;
    machine.volumes = {share, record("/Volumes/Local", "Local")};
    StorageSnapshot snapshot = machine.snapshot();
    EXPECT_FALSE(machine.runner.ranWith({"info", "-plist", "/Volumes/media"}));
    EXPECT_TRUE(machine.runner.ranWith({"info", "-plist", "/Volumes/Local"}));
    auto volume = snapshot.volume("/Volumes/media");
    ASSERT_TRUE(volume);
    EXPECT_TRUE(volume->isNetwork);
    EXPECT_EQ(volume->physicalDiskID, std::nullopt);
    // A failed volume info is silent.
    EXPECT_THAT(snapshot.warnings, ElementsAre(StartsWith("Could not list physical disks")));
}

TEST(StorageDiscoverySnapshot, SortsDisksInternalFirstThenByPlainID) {
    Machine machine;
    machine.runner.answer(diskutil, {"list", "-plist", "physical"},
                          list({"disk4", "disk2", "disk10", "disk0", "disk3"}));
    for (const auto& [id, internal] :
         {std::pair{"disk4", false}, {"disk2", true}, {"disk10", true}, {"disk0", true}, {"disk3", false}})
        machine.runner.answer(diskutil, {"info", "-plist", id}, diskInfo(id, internal));
    std::vector<std::string> order;
    for (const auto& disk : machine.snapshot().disks) order.push_back(disk.id);
    EXPECT_EQ(order, (std::vector<std::string>{"disk0", "disk10", "disk2", "disk3", "disk4"}));
}

TEST(StorageDiscoverySnapshot, SortsVolumesBootFirstThenByName) {
    Machine machine;
    MountedVolumeRecord root = record("/", "zzz System");
    root.isRootFileSystem = true;
    machine.volumes = {record("/Volumes/b", "beta"), record("/Volumes/B", "Beta"), root, record("/Volumes/A", "Alpha")};
    std::vector<std::string> order;
    for (const auto& volume : machine.snapshot().volumes) order.push_back(volume.name);
    EXPECT_EQ(order, (std::vector<std::string>{"zzz System", "Alpha", "Beta", "beta"}));
}

TEST(StorageDiscoverySnapshot, JoinsVolumesToDisksThroughTheDiskTool) {
    Machine machine;
    machine.runner.answer(diskutil, {"list", "-plist", "physical"}, list({"disk0"}));
    machine.runner.answer(diskutil, {"info", "-plist", "disk0"}, diskInfo("disk0", true));
    PropertyListValue data = dict();
    PropertyListValue store = dict();
    store.set("APFSPhysicalStore", str("disk0s2"));
    data.set("DeviceIdentifier", str("disk3s5"))
        .set("ParentWholeDisk", str("disk3"))
        .set("APFSPhysicalStores", PropertyListValue::array({store}))
        .set("APFSContainerReference", str("disk3"));
    machine.runner.answer(diskutil, {"info", "-plist", "/System/Volumes/Data"}, xml(data));
    machine.volumes = {record("/System/Volumes/Data", "Data")};
    StorageSnapshot snapshot = machine.snapshot();
    ASSERT_EQ(snapshot.volumes.size(), 1u);
    EXPECT_EQ(snapshot.volumes[0].physicalDiskID, "disk0");
    EXPECT_EQ(snapshot.volumes[0].containerID, "disk3");
    EXPECT_EQ(snapshot.volumesOn(snapshot.disks[0]).size(), 1u);
    EXPECT_TRUE(snapshot.warnings.empty());
}

TEST(StorageDiscoveryMakeVolume, AttributionThroughPhysicalStoresParentThenDevice) {
    DiskutilVolumeInfo info = apfsInfo();
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), info, {"disk0", "disk3"}).physicalDiskID, "disk0");
    // A synthesized container disk is only a candidate after the stores.
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), info, {"disk3"}).physicalDiskID, "disk3");
    info.physicalStores.clear();
    info.parentWholeDisk = "disk4";
    info.deviceIdentifier = "disk5s1";
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), info, {"disk4", "disk5"}).physicalDiskID, "disk4");
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), info, {"disk5"}).physicalDiskID, "disk5");
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), info, {"disk0"}).physicalDiskID, std::nullopt);
    EXPECT_EQ(StorageDiscovery::makeVolume(record("/", "x"), std::nullopt, {"disk0"}).physicalDiskID, std::nullopt);
}

TEST(StorageDiscoveryMakeVolume, FieldsFromRecordAndInfo) {
    MountedVolumeRecord r = record("/System/Volumes/Data", "Data");
    r.importantAvailableBytes = 700;
    r.isReadOnly = true;
    r.isRootFileSystem = false;
    r.typeName = "APFS";
    r.supportsCaseSensitiveNames = false;
    // The id is the disk tool's UUID (the record has none); purgeable space counts as free.
    // Compared as JSON, where an absent optional is an absent key.
    EXPECT_EQ(Json(StorageDiscovery::makeVolume(r, apfsInfo(), {"disk0"})),
              Json::parse(R"({"id":"DATA-UUID","name":"Macintosh HD - Data","mountPoint":"/System/Volumes/Data",)"
                          R"("bsdName":"disk3s5","fileSystemType":"apfs","fileSystemName":"APFS","totalBytes":1000,)"
                          R"("availableBytes":700,"isInternal":true,"isEjectable":false,"isReadOnly":true,)"
                          R"("isNetwork":false,"isBootVolume":false,"isEncrypted":true,"ownershipEnabled":true,)"
                          R"("supportsCaseSensitiveNames":false,"busProtocol":"Apple Fabric","containerID":"disk3",)"
                          R"("physicalDiskID":"disk0"})"));
}

TEST(StorageDiscoveryMakeVolume, FallbacksWithoutTheDiskTool) {
    MountedVolumeRecord r = record("/Volumes/Stick", "Stick");
    r.typeName = "MSDOS";
    r.importantAvailableBytes = 0;  // not positive: the plain figure stands
    StorageVolume volume = StorageDiscovery::makeVolume(r, std::nullopt, {});
    EXPECT_EQ(Json(volume),
              Json::parse(R"({"id":"/Volumes/Stick","name":"Stick","mountPoint":"/Volumes/Stick",)"
                          R"("fileSystemType":"msdos","fileSystemName":"MSDOS","totalBytes":1000,"availableBytes":400,)"
                          R"("isInternal":false,"isEjectable":false,"isReadOnly":false,"isNetwork":false,)"
                          R"("isBootVolume":false})"));
    r.uuid = "RECORD-UUID";
    r.typeName.reset();
    volume = StorageDiscovery::makeVolume(r, apfsInfo(), {});
    EXPECT_EQ(volume.id, "RECORD-UUID");  // the file system's UUID comes first
    DiskutilVolumeInfo bare;
    volume = StorageDiscovery::makeVolume(r, bare, {});
    EXPECT_EQ(volume.fileSystemType, std::nullopt);
    EXPECT_EQ(volume.fileSystemLabel(), "Unknown");
}

TEST(StorageDiscoveryMakeVolume, EjectablePrefersTheFileSystemInternalPrefersTheDiskTool) {
    MountedVolumeRecord r = record("/Volumes/Projects", "Projects");
    r.isEjectable = false;
    r.isInternal = true;
    DiskutilVolumeInfo info;
    info.isEjectable = true;
    info.isInternal = false;
    StorageVolume volume = StorageDiscovery::makeVolume(r, info, {});
    EXPECT_FALSE(volume.isEjectable);
    EXPECT_FALSE(volume.isInternal);

    r.isEjectable.reset();
    r.isInternal.reset();
    info.isInternal = true;
    volume = StorageDiscovery::makeVolume(r, info, {});
    EXPECT_TRUE(volume.isEjectable);  // unreported by the file system: the disk tool's answer
    EXPECT_TRUE(volume.isInternal);

    info.isInternal.reset();
    r.isInternal = true;
    EXPECT_TRUE(StorageDiscovery::makeVolume(r, info, {}).isInternal);
}

TEST(StorageDiscoveryErrors, DescribeUsesTheDocumentedTexts) {
    EXPECT_EQ(describeError(CommandError::failed(1, "Could not find disk: disk9")),
              "Command failed (1): Could not find disk: disk9");
    EXPECT_EQ(describeError(DiskutilParseError::notADictionary()), DiskutilParseError::notADictionary().description());
    EXPECT_EQ(describeError(std::runtime_error("plain")), "plain");
}
