// The topology of every recorded machine: each disk matched to its node, and the connection
// dimension of the health view that follows from it.
#include "hardware/HardwareDiscovery.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"
#include "machine/MachineTopology.h"
#include "support/TemporaryFolder.h"
#include "topology/SysfsTree.h"
#include "topology/TopologyDiscovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::TemporaryFolder;

DimensionAssessment connection(const StorageSnapshot& snapshot, const std::vector<DeviceTopology>& topologies) {
    for (auto& assessment : MachineDiagnosis::of(snapshot, CorvelSettings{}, topologies).health)
        if (assessment.dimension == HealthDimension::connection) return assessment;
    ADD_FAILURE() << "no connection dimension";
    return {};
}

struct Replayed {
    StorageSnapshot snapshot;
    TopologyReading reading;
};

Replayed replay(const std::string& name) {
    MachineOptions options;
    options.replay = testing::machineFolder(name);
    auto machine = Machine::open(options);
    Replayed result;
    result.snapshot = machine.snapshot();
    result.reading = MachineTopology::read(machine, result.snapshot);
    return result;
}

struct MachineCase {
    const char* machine;
    std::vector<std::string> transports;  // per disk, in snapshot order; "" for not located
    HealthStatus connectionStatus;
};

class RecordedTopologyTest : public ::testing::TestWithParam<MachineCase> {};

TEST_P(RecordedTopologyTest, EachDiskIsMatchedToItsOwnNode) {
    const auto& c = GetParam();
    const auto replayed = replay(c.machine);
    const auto& topologies = replayed.reading.topologies;
    ASSERT_EQ(topologies.size(), replayed.snapshot.disks.size());
    for (std::size_t i = 0; i < topologies.size(); ++i) {
        const auto& disk = replayed.snapshot.disks[i];
        SCOPED_TRACE(disk.id);
        EXPECT_EQ(topologies[i].diskID, disk.id);
        ASSERT_LT(i, c.transports.size());
        EXPECT_EQ(topologies[i].transport.value_or(""), c.transports[i]);
        if (c.transports[i].empty()) {
            EXPECT_THAT(topologies[i].path, IsEmpty());
            continue;
        }
        // The last node is the disk itself, named as the snapshot names it.
        ASSERT_FALSE(topologies[i].path.empty());
        EXPECT_EQ(topologies[i].path.back().kind, "disk");
        EXPECT_EQ(topologies[i].path.back().label, disk.displayName());
    }
    EXPECT_EQ(connection(replayed.snapshot, topologies).status, c.connectionStatus);
}

INSTANTIATE_TEST_SUITE_P(
    Machines, RecordedTopologyTest,
    ::testing::Values(MachineCase{"linux-workstation", {"pcie", "sata", "usb"}, HealthStatus::attention},
                      MachineCase{"linux-docker-engine", {"", "", ""}, HealthStatus::unknown},
                      MachineCase{"macbook-air-m2", {"fabric"}, HealthStatus::normal}),
    [](const auto& param) {
        std::string name = param.param.machine;
        std::erase(name, '-');
        return name;
    });

TEST(RecordedTopology, WorkstationFindsTheDowntrainedDriveOnly) {
    const auto replayed = replay("linux-workstation");
    const auto& topologies = replayed.reading.topologies;
    EXPECT_THAT(replayed.reading.warnings, IsEmpty());
    EXPECT_THAT(topologies[0].findings, ElementsAre(Field(&Finding::ruleID, "topology.pcieDowntrained")));
    EXPECT_EQ(topologies[0].effectiveLinkBitsPerSecond, 16'000'000'000);
    EXPECT_EQ(topologies[1].effectiveLinkBitsPerSecond, 6'000'000'000);
    // The stick runs at 480 Mb/s but declares USB 2.1 while doing so: no proof it could go faster.
    EXPECT_EQ(topologies[2].effectiveLinkBitsPerSecond, 480'000'000);
    EXPECT_THAT(topologies[2].findings, IsEmpty());
    EXPECT_THAT(topologies[2].branches, ElementsAre(Field(&TopologyNode::label, "Keyboard")));
    const auto health = connection(replayed.snapshot, topologies);
    EXPECT_EQ(health.summary, "NVMe drive trained below its PCIe link");
}

TEST(RecordedTopology, RecordingWithoutATreeSaysSoAndStaysUnknown) {
    const auto replayed = replay("linux-docker-engine");
    EXPECT_THAT(replayed.reading.warnings, ElementsAre(HasSubstr("the recording has no sysfs tree")));
    EXPECT_EQ(connection(replayed.snapshot, replayed.reading.topologies).summary, "Topology not yet inspected.");
}

TEST(RecordedTopology, ThisMachinesVirtioDiskIsInspectedWithoutALinkSpeed) {
    SysfsTree sysfs(testing::fixturePath("sysfs/linux-vm-virtio"));
    StorageSnapshot snapshot;
    PhysicalDisk vda;
    vda.id = "vda";
    snapshot.disks = {vda};
    const auto reading = TopologyDiscovery::fromSysfs(sysfs, snapshot.disks);
    ASSERT_EQ(reading.topologies.size(), 1u);
    EXPECT_EQ(reading.topologies[0].transport, "virtual");
    EXPECT_TRUE(reading.topologies[0].isInspected());
    EXPECT_EQ(connection(snapshot, reading.topologies).status, HealthStatus::normal);

    // A second disk nobody could follow keeps the dimension unknown, and says how many were known.
    PhysicalDisk missing;
    missing.id = "sdz";
    snapshot.disks.push_back(missing);
    SysfsTree again(testing::fixturePath("sysfs/linux-vm-virtio"));
    const auto partial = connection(snapshot, TopologyDiscovery::fromSysfs(again, snapshot.disks).topologies);
    EXPECT_EQ(partial.status, HealthStatus::unknown);
    EXPECT_EQ(partial.summary, "Link speed known for 1 of 2 disks.");

    SysfsTree hardware(testing::fixturePath("sysfs/linux-vm-virtio"));
    const auto summary = HardwareDiscovery::fromSysfs(hardware);
    EXPECT_TRUE(summary.memoryBytes.has_value());
    EXPECT_THAT(summary.chip.value_or(""), HasSubstr("AMD EPYC"));
    EXPECT_FALSE(summary.battery.has_value());
}

TEST(SysfsTreeTest, LoopsAndEscapesAreBoundedWarnings) {
    TemporaryFolder folder;
    std::filesystem::create_directories(folder.root() / "sys/block/sda");
    std::filesystem::create_symlink("loop-b", folder.root() / "sys/block/sda/loop-a");
    std::filesystem::create_symlink("loop-a", folder.root() / "sys/block/sda/loop-b");
    std::filesystem::create_symlink("loop-a", folder.root() / "sys/block/sda/device");
    std::filesystem::create_symlink("../../../../../../../etc", folder.root() / "sys/block/sdb");
    SysfsTree sysfs(folder.root());
    EXPECT_EQ(sysfs.resolve("/sys/block/sda/device"), std::nullopt);
    EXPECT_THAT(sysfs.warnings(), Contains(HasSubstr("/sys/block/sda/device")));
    // Links never lead above the tree: the host's /etc/hostname is not read through one.
    EXPECT_EQ(sysfs.read("/sys/block/sdb/hostname"), std::nullopt);

    PhysicalDisk disk;
    disk.id = "sda";
    const auto reading = TopologyDiscovery::fromSysfs(sysfs, {disk});
    EXPECT_THAT(reading.topologies[0].path, IsEmpty());
    EXPECT_FALSE(reading.warnings.empty());
}

TEST(SysfsTreeTest, RecordingAFolderOutsideTheRecordingIsRefused) {
    RecordedMachine recording;
    recording.directory = "/tmp";
    std::string problem;
    recording.document = Json{{"sysfs", "../etc"}};
    EXPECT_EQ(TopologyDiscovery::recordedSysfs(recording, &problem), std::nullopt);
    EXPECT_THAT(problem, HasSubstr("is not inside the recording"));
    recording.document = Json{{"sysfs", 3}};
    EXPECT_EQ(TopologyDiscovery::recordedSysfs(recording, &problem), std::nullopt);
    EXPECT_THAT(problem, HasSubstr("is not a folder name"));
}

}  // namespace
}  // namespace corvel
