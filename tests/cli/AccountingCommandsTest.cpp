// `velmora accounting` on recorded machines: the split of a btrfs laptop's used space and of a
// Mac's APFS container with the last scan from the data folder, a Mac whose snapshot listing was
// not recorded, a scan summary that is not the recorded machine's, the refusals, and the status
// line and insight about snapshots.
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using clitest::lineWith;
using clitest::machine;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// A data folder whose last scan covered `root`, and the runs of velmora on recorded machines.
class AccountingCommand : public ::testing::Test {
protected:
    void scanned(const std::string& root, std::int64_t allocated) const {
        box_.write("data/space-summary.json", R"({"root":")" + root +
                                                  R"(","scannedAt":"2026-11-01T20:00:00Z","wasCancelled":false,)"
                                                  R"("allocatedBytes":)" +
                                                  std::to_string(allocated) +
                                                  R"(,"topConsumers":[],"credentialsInTrash":[]})");
    }
    clitest::Outcome on(const std::string& name, const std::vector<std::string>& words) const {
        std::vector<std::string> arguments{"--replay", machine(name)};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return box_.run(arguments);
    }
    clitest::Sandbox box_;
};

TEST_F(AccountingCommand, SplitsARecordedBtrfsRootWithTheLastScan) {
    scanned("/home/me", 250000000000);
    const auto outcome = on("linux-btrfs-laptop", {"accounting"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("400 GB used of 510 GB, 110 GB available"));
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"), AllOf(HasSubstr("62 GB"), HasSubstr("3 snapshots")));
    EXPECT_THAT(lineWith(outcome.out, "seen by the last scan"), AllOf(HasSubstr("250 GB"), HasSubstr("/home/me")));
    EXPECT_THAT(lineWith(outcome.out, "not explained (not readable by you, or outside the scanned folder)"),
                HasSubstr("61.82 GB"));
    EXPECT_THAT(lineWith(outcome.out, "@/.snapshots/1/snapshot"), AllOf(HasSubstr("2026-10-02"), HasSubstr("41.2 GB")));

    const auto json = on("linux-btrfs-laptop", {"--json", "accounting", "/home/me"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json document = Json::parse(json.out);
    EXPECT_EQ(document.at("mountPoint"), "/");
    EXPECT_EQ(document.at("rows").back().at("bytes"), 61820102144);
}

TEST_F(AccountingCommand, SplitsARecordedMacsContainer) {
    scanned("/Users/dana", 200000000000);
    const auto outcome = on("macbook-air-m2", {"accounting"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("APFS container disk3, 6 volumes"));
    EXPECT_THAT(lineWith(outcome.out, "System volume"),
                AllOf(HasSubstr("10.5 GB"), HasSubstr("Macintosh HD (disk3s1)")));
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"),
                AllOf(HasSubstr("unknown"), HasSubstr("3 snapshots, sizes not reported by APFS")));
    // 293.15 GB used − 21 GB in the other volumes − 18.64 GB purgeable − 200 GB scanned.
    EXPECT_THAT(lineWith(outcome.out, "not explained"), HasSubstr("53.51 GB"));
    EXPECT_THAT(outcome.out, HasSubstr("Velmora never deletes snapshots; to thin them: tmutil thinlocalsnapshots"));

    const auto json = on("macbook-air-m2", {"--json", "accounting"});
    ASSERT_EQ(json.status, 0) << json.err;
    EXPECT_EQ(Json::parse(json.out).at("device"), "disk3");
}

TEST_F(AccountingCommand, WarnsOnceRefusesUnknownVolumesAndIgnoresAForeignScan) {
    const auto unlisted = on("mac-studio-external-usb", {"accounting"});
    EXPECT_TRUE(clitest::failsWith(unlisted, 0, "warning: diskutil apfs listSnapshots: "));
    EXPECT_THAT(lineWith(unlisted.out, "local snapshots"), AllOf(HasSubstr("unknown"), Not(HasSubstr(" 0 B"))));

    for (const char* name : {"linux-btrfs-laptop", "macbook-air-m2"})
        EXPECT_TRUE(clitest::failsWith(on(name, {"accounting", "nope"}), 2, "unknown volume 'nope'")) << name;

    scanned("/home/someone-else", 200000000000);
    const auto foreign = on("linux-btrfs-laptop", {"accounting"});
    EXPECT_TRUE(clitest::failsWith(
        foreign, 0, "Last scan summary ignored: it covers /home/someone-else, which is not on the recorded machine"));
    EXPECT_THAT(foreign.out, Not(HasSubstr("seen by the last scan")));
}

TEST_F(AccountingCommand, StatusAndInsightsPointToSnapshotsHoldingMoreThanFivePercent) {
    const auto laptop = on("linux-btrfs-laptop", {"status"});
    ASSERT_EQ(laptop.status, 0) << laptop.err;
    EXPECT_THAT(lineWith(laptop.out, "Local snapshots hold 62 GB (12%) of /"), HasSubstr("velmora accounting /"));
    EXPECT_THAT(on("linux-btrfs-laptop", {"insights"}).out,
                AllOf(HasSubstr("Local snapshots hold 62 GB"), HasSubstr("Thin with btrfs subvolume delete")));
    EXPECT_EQ(Json::parse(on("linux-btrfs-laptop", {"--json", "status"}).out).at("snapshotShares").size(), 1u);
    // APFS reports no snapshot sizes: no line, however many snapshots there are.
    EXPECT_THAT(on("macbook-air-m2", {"status"}).out, Not(HasSubstr("Local snapshots hold")));
}

}  // namespace
}  // namespace corvel
