// `velmora status`, `disks` and `volumes` on recorded machines, driven in-process as a person or
// a script would call them.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "storage/StorageSnapshot.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvel::cli {
namespace {

using clitest::lineWith;
using clitest::machine;

clitest::Outcome velmora(const std::vector<std::string>& words) {
    return clitest::velmoraInProcess(words, registerStatusCommands);
}

}  // namespace

TEST(StatusCommand, ShowsDisksVolumesAndWarningsOfARecordedMac) {
    auto outcome = velmora({"status", "--replay", machine("mac-mini-flaky-tools")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.err.empty());
    const std::string& out = outcome.out;
    EXPECT_NE(out.find("Recorded machine: Mac mini (M1)"), std::string::npos);
    std::string disk = lineWith(out, "disk6");
    EXPECT_NE(disk.find("ST2000DM008-2FR102"), std::string::npos) << disk;
    EXPECT_NE(disk.find("External · USB"), std::string::npos) << disk;
    EXPECT_NE(disk.find("Failing"), std::string::npos) << disk;
    std::string root = lineWith(out, "Macintosh HD");
    EXPECT_NE(root.find("96%"), std::string::npos) << root;
    EXPECT_NE(root.find("10.99 GB"), std::string::npos) << root;
    EXPECT_NE(root.find("disk0"), std::string::npos) << root;
    EXPECT_NE(lineWith(out, "/Volumes/Archive").find("—"), std::string::npos);  // no carrying disk
    EXPECT_NE(out.find("Warnings\n  ! Could not read details for disk4: Command timed out\n"), std::string::npos);
    EXPECT_EQ(out.find("\033["), std::string::npos);  // no colour without a terminal
}

TEST(StatusCommand, IsTheDefaultCommand) {
    auto explicitStatus = velmora({"status", "--replay", machine("macbook-air-m2")});
    auto bare = velmora({"--replay", machine("macbook-air-m2")});
    EXPECT_EQ(bare.status, 0);
    EXPECT_EQ(bare.out, explicitStatus.out);
}

TEST(StatusCommand, JSONIsTheSnapshotRecord) {
    auto outcome =
        velmora({"--json", "status", "--replay", machine("linux-workstation"), "--now", "2026-12-01T00:00:00Z"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    Json document = Json::parse(outcome.out);
    ASSERT_TRUE(document.contains("snapshot"));
    auto snapshot = document.at("snapshot").get<StorageSnapshot>();
    EXPECT_EQ(snapshot.capturedAt, *ISO8601::parse("2026-12-01T00:00:00Z"));
    EXPECT_EQ(snapshot.disks.size(), 3u);
    EXPECT_EQ(snapshot.volumes.size(), 7u);
    EXPECT_EQ(document.at("snapshot").at("volumes").at(0).at("mountPoint"), "/");
}

TEST(StatusCommand, DisksAndVolumesShowOneSideEach) {
    auto disks = velmora({"disks", "--replay", machine("mac-studio-external-usb")});
    ASSERT_EQ(disks.status, 0);
    EXPECT_NE(disks.out.find("WD Elements 25A3"), std::string::npos);
    EXPECT_NE(lineWith(disks.out, "disk4s2").find("Elements"), std::string::npos);  // partitions listed
    EXPECT_EQ(disks.out.find("Volumes\n"), std::string::npos);

    auto volumes = velmora({"volumes", "--replay", machine("mac-studio-external-usb")});
    ASSERT_EQ(volumes.status, 0);
    EXPECT_NE(lineWith(volumes.out, "/Volumes/media").find("network"), std::string::npos);
    EXPECT_EQ(volumes.out.find("Disks\n"), std::string::npos);

    Json disksJson = Json::parse(velmora({"disks", "--json", "--replay", machine("mac-studio-external-usb")}).out);
    EXPECT_EQ(disksJson.at("disks").size(), 2u);
    EXPECT_TRUE(disksJson.at("warnings").empty());
    Json volumesJson = Json::parse(velmora({"volumes", "--json", "--replay", machine("mac-mini-flaky-tools")}).out);
    EXPECT_EQ(volumesJson.at("volumes").size(), 4u);
    EXPECT_EQ(volumesJson.at("warnings").size(), 1u);
}

TEST(StatusCommand, AnUnreadableRecordingIsBadUsage) {
    auto outcome = velmora({"status", "--replay", machine("no-such-machine")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err.rfind("velmora: --replay: ", 0), 0u) << outcome.err;
    EXPECT_NE(outcome.err.find("no-such-machine"), std::string::npos);
    EXPECT_TRUE(outcome.out.empty());
}

}  // namespace corvel::cli
