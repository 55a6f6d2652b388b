// `velmora status`, `disks` and `volumes` on recorded machines, driven in-process as a person or
// a script would call them.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"
#include "storage/StorageSnapshot.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace corvel::cli {
namespace {

using clitest::machine;

clitest::Outcome velmora(const std::vector<std::string>& words) {
    return clitest::velmoraInProcess(words, registerStatusCommands);
}

}  // namespace

// What a person reads, in one reviewed file: status of a recorded Mac (its failing USB disk, the
// nearly full startup volume, a volume on no disk shown as "—", the tool that timed out as a
// warning; no colour without a terminal); disks and volumes each showing only their side.
TEST(StatusCommand, TextOutputsMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const auto& [command, name] :
         {std::pair{"status", "mac-mini-flaky-tools"}, std::pair{"disks", "mac-studio-external-usb"},
          std::pair{"volumes", "mac-studio-external-usb"}}) {
        const auto outcome = velmora({command, "--replay", machine(name)});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "") << command;
        rendered[std::string(command) + " " + name] = clitest::outputLines(outcome.out, machine(name));
    }
    testing::expectGolden("cli/status-outputs.json", rendered);
}

TEST(StatusCommand, IsTheDefaultCommand) {
    EXPECT_EQ(velmora({"--replay", machine("macbook-air-m2")}).out,
              velmora({"status", "--replay", machine("macbook-air-m2")}).out);
}

TEST(StatusCommand, JSONIsTheSnapshotRecordAndDisksAndVolumesShowOneSideEach) {
    auto outcome =
        velmora({"--json", "status", "--replay", machine("linux-workstation"), "--now", "2026-12-01T00:00:00Z"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto snapshot = Json::parse(outcome.out).at("snapshot").get<StorageSnapshot>();
    EXPECT_EQ(snapshot.capturedAt, *ISO8601::parse("2026-12-01T00:00:00Z"));
    EXPECT_EQ(snapshot.volumes.size(), 7u);

    Json disksJson = Json::parse(velmora({"disks", "--json", "--replay", machine("mac-studio-external-usb")}).out);
    EXPECT_EQ(disksJson.at("disks").size(), 2u);
    EXPECT_FALSE(disksJson.contains("volumes"));
    Json volumesJson = Json::parse(velmora({"volumes", "--json", "--replay", machine("mac-mini-flaky-tools")}).out);
    EXPECT_EQ(volumesJson.at("volumes").size(), 4u);
    EXPECT_EQ(volumesJson.at("warnings").size(), 1u);
}

TEST(StatusCommand, AnUnreadableRecordingIsBadUsage) {
    const auto outcome = velmora({"status", "--replay", machine("no-such-machine")});
    EXPECT_TRUE(clitest::failsWith(outcome, 2, "velmora: --replay: "));
    EXPECT_THAT(outcome.err, ::testing::HasSubstr("no-such-machine"));
    EXPECT_EQ(outcome.out, "");
}

}  // namespace corvel::cli
