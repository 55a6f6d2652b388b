// The topology of every recorded machine: each disk matched to its node, and the connection
// dimension of the health view that follows from it.
#include "hardware/HardwareDiscovery.h"
#include "machine/Machine.h"
#include "machine/MachineDiagnosis.h"
#include "machine/MachineTopology.h"
#include "support/Golden.h"
#include "support/TemporaryFolder.h"
#include "topology/SysfsTree.h"
#include "topology/TopologyDiscovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

using ::testing::Contains;
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

// Every recorded machine's topologies, reading warnings and connection dimension in one reviewed
// file: the workstation's NVMe drive trained below its PCIe link (and its USB stick at 480 Mb/s,
// declared USB 2.1, with no finding), the Docker host recorded without a sysfs tree (unknown, said
// so), the MacBook Air on its fabric. Each disk is matched to its own node, named as the snapshot
// names it.
TEST(RecordedTopology, TopologiesMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* name : {"linux-workstation", "linux-docker-engine", "macbook-air-m2"}) {
        const auto replayed = replay(name);
        const auto& topologies = replayed.reading.topologies;
        ASSERT_EQ(topologies.size(), replayed.snapshot.disks.size()) << name;
        for (std::size_t i = 0; i < topologies.size(); ++i) {
            EXPECT_EQ(topologies[i].diskID, replayed.snapshot.disks[i].id) << name;
            if (!topologies[i].path.empty()) {
                EXPECT_EQ(topologies[i].path.back().label, replayed.snapshot.disks[i].displayName()) << name;
            }
        }
        rendered[name] = {{"topologies", topologies},
                          {"warnings", replayed.reading.warnings},
                          {"connection", connection(replayed.snapshot, topologies)}};
    }
    testing::expectGolden("topology/recorded-machines.json", rendered);
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
