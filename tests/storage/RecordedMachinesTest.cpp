// Each recorded machine, replayed through the real parsers and discovery, gives the snapshot a
// person looking at that machine would expect.
#include "StorageTestSupport.h"
#include "storage/MachineStorage.h"

#include "command/RecordedCommandRunner.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace corvel;
using namespace corvel::testing;

namespace {

struct Replay {
    RecordedMachine machine;
    RecordedCommandRunner runner;
    StorageSnapshot snapshot;

    explicit Replay(const std::string& name)
        : machine(RecordedMachine::load(machineFolder(name))),
          runner(RecordedCommandRunner::load(machineFolder(name))),
          snapshot(MachineStorage::snapshot(runner, &machine, machine.capturedAt)) {}
};

// The snapshot with what a person reads off it: disk and file-system labels, the used share, the
// capacity counted once per container, and the volumes tied to no disk.
Json rendered(const StorageSnapshot& snapshot) {
    Json disks = Json::array();
    for (const auto& disk : snapshot.disks)
        disks.push_back({{"id", disk.id}, {"displayName", disk.displayName()}, {"connection", disk.connectionLabel()}});
    Json volumes = Json::array();
    for (const auto& volume : snapshot.volumes)
        volumes.push_back({{"id", volume.id},
                           {"fileSystem", volume.fileSystemLabel()},
                           {"usedPercent", std::lround(volume.usedFraction() * 100)}});
    Json unassigned = Json::array();
    for (const auto& volume : snapshot.unassignedVolumes()) unassigned.push_back(volume.id);
    const LocalCapacity capacity = snapshot.distinctLocalCapacity();
    return {{"snapshot", snapshot},
            {"disks", disks},
            {"volumes", volumes},
            {"unassignedVolumes", unassigned},
            {"distinctLocalCapacity", {{"total", capacity.total}, {"available", capacity.available}}}};
}

}  // namespace

// Every recorded machine in one reviewed file: an Apple silicon laptop (two volumes of one
// container, counted once), a desktop with an external USB disk and a network share, a machine
// whose tools time out or fail (warnings, never failures), and a Linux workstation (LVM on a
// crypt mapping, a USB stick, a bind mount that is not a second volume).
TEST(RecordedMachines, SnapshotsMatchTheReviewedCopy) {
    Json all = Json::object();
    for (const char* name : {"macbook-air-m2", "mac-studio-external-usb", "mac-mini-flaky-tools", "linux-workstation"})
        all[name] = rendered(Replay(name).snapshot);
    expectGolden("storage/recorded-machines.json", all);
}

TEST(RecordedMachines, ReplayIsRepeatable) {
    EXPECT_EQ(Replay("mac-studio-external-usb").snapshot, Replay("mac-studio-external-usb").snapshot);
}
