// `velmora accounting` on recorded machines: the split of a btrfs laptop's used space and of a
// Mac's APFS container with the last scan from the data folder, their JSON, a Mac whose snapshot
// listing was not recorded, a scan summary that is not the recorded machine's, the refusals, and
// the status line and insight about snapshots.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace corvel::cli {
namespace {

using clitest::lineWith;
using clitest::machine;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(AccountingCommand, SplitsARecordedBtrfsRootWithTheLastScan) {
    clitest::TemporaryFolder data;
    data.write("space-summary.json", R"({"root":"/home/me","scannedAt":"2026-11-19T20:00:00Z","wasCancelled":false,)"
                                     R"("allocatedBytes":250000000000,"topConsumers":[],"credentialsInTrash":[]})");
    const auto outcome = clitest::velmora(
        {"--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "accounting"}, {"NO_COLOR=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("400 GB used of 510 GB, 110 GB available"));
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"), AllOf(HasSubstr("62 GB"), HasSubstr("3 snapshots")));
    EXPECT_THAT(lineWith(outcome.out, "file-system metadata"), HasSubstr("7 GB"));
    EXPECT_THAT(lineWith(outcome.out, "seen by the last scan"), AllOf(HasSubstr("250 GB"), HasSubstr("/home/me")));
    EXPECT_THAT(lineWith(outcome.out, "not explained (not readable by you, or outside the scanned folder)"),
                HasSubstr("61.82 GB"));
    EXPECT_THAT(lineWith(outcome.out, "@/.snapshots/1/snapshot"), AllOf(HasSubstr("2026-10-02"), HasSubstr("41.2 GB")));

    const auto json = clitest::velmora(
        {"--json", "--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "accounting", "/home/me"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json document = Json::parse(json.out);
    EXPECT_EQ(document.at("mountPoint"), "/");
    EXPECT_EQ(document.at("rows").back().at("part"), "notExplained");
    EXPECT_EQ(document.at("rows").back().at("bytes"), 61820102144);
}

TEST(AccountingCommand, RefusesUnknownVolumes) {
    clitest::TemporaryFolder data;
    for (const char* name : {"linux-btrfs-laptop", "macbook-air-m2"}) {
        const auto unknown =
            clitest::velmora({"--data-dir", data.path(), "--replay", machine(name), "accounting", "nope"});
        EXPECT_EQ(unknown.status, 2) << name;
        EXPECT_THAT(unknown.err, HasSubstr("unknown volume 'nope'")) << name;
    }
}

std::string summaryOf(const std::string& root, std::int64_t allocated) {
    return R"({"root":")" + root + R"(","scannedAt":"2026-11-01T20:00:00Z","wasCancelled":false,"allocatedBytes":)" +
           std::to_string(allocated) + R"(,"topConsumers":[],"credentialsInTrash":[]})";
}

TEST(AccountingCommand, SplitsARecordedMacsContainer) {
    clitest::TemporaryFolder data;
    data.write("space-summary.json", summaryOf("/Users/dana", 200000000000));
    const auto outcome = clitest::velmora(
        {"--data-dir", data.path(), "--replay", machine("macbook-air-m2"), "accounting"}, {"NO_COLOR=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("APFS container disk3, 6 volumes"));
    EXPECT_THAT(outcome.out, HasSubstr("293.15 GB used of 494.38 GB, 201.23 GB available"));
    EXPECT_THAT(lineWith(outcome.out, "System volume"),
                AllOf(HasSubstr("10.5 GB"), HasSubstr("Macintosh HD (disk3s1)")));
    EXPECT_THAT(lineWith(outcome.out, "VM volume (swap files)"), HasSubstr("3.22 GB"));
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"),
                AllOf(HasSubstr("unknown"), HasSubstr("3 snapshots, sizes not reported by APFS")));
    EXPECT_THAT(lineWith(outcome.out, "purgeable space"), HasSubstr("18.64 GB"));
    EXPECT_THAT(lineWith(outcome.out, "seen by the last scan"), AllOf(HasSubstr("200 GB"), HasSubstr("/Users/dana")));
    // 293.15 GB used − 21 GB in the other volumes − 18.64 GB purgeable − 200 GB scanned.
    EXPECT_THAT(lineWith(outcome.out, "not explained"), HasSubstr("53.51 GB"));
    EXPECT_THAT(lineWith(outcome.out, "2026-11-02-081733"), HasSubstr("2026-11-02 08:17:33"));
    EXPECT_THAT(outcome.out, HasSubstr("Velmora never deletes snapshots; to thin them: tmutil thinlocalsnapshots"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("Macintosh HD - Data (disk3s5)")));  // the Data volume is the split itself

    const auto json =
        clitest::velmora({"--json", "--data-dir", data.path(), "--replay", machine("macbook-air-m2"), "accounting"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json document = Json::parse(json.out);
    EXPECT_EQ(document.at("device"), "disk3");
    EXPECT_EQ(document.at("usedBytes"), 293150228480);
    EXPECT_EQ(document.at("snapshots").size(), 3u);
    EXPECT_EQ(document.at("rows").back().at("part"), "notExplained");
    EXPECT_EQ(document.at("rows").back().at("bytes"), 53506663702);
}

TEST(AccountingCommand, AMacWithoutASnapshotListingSaysSoOnceAndShowsUnknown) {
    clitest::TemporaryFolder data;
    const auto outcome = clitest::velmora(
        {"--data-dir", data.path(), "--replay", machine("mac-studio-external-usb"), "accounting"}, {"NO_COLOR=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("warning: diskutil apfs listSnapshots: "));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"), HasSubstr("unknown"));
    EXPECT_THAT(lineWith(outcome.out, "local snapshots"), Not(HasSubstr(" 0 B")));
}

TEST(AccountingCommand, IgnoresAScanSummaryThatIsNotOnTheRecordedMachine) {
    clitest::TemporaryFolder data;
    data.write("space-summary.json", summaryOf("/home/someone-else", 200000000000));
    for (const char* name : {"macbook-air-m2", "linux-btrfs-laptop"}) {
        const auto outcome =
            clitest::velmora({"--data-dir", data.path(), "--replay", machine(name), "accounting"}, {"NO_COLOR=1"});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr("Last scan summary ignored: it covers /home/someone-else, which is not on "
                                           "the recorded machine"))
            << name;
        EXPECT_THAT(outcome.out, Not(HasSubstr("seen by the last scan"))) << name;
    }
}

TEST(AccountingCommand, StatusAndInsightsPointToSnapshotsHoldingMoreThanFivePercent) {
    clitest::TemporaryFolder data;
    const auto laptop = clitest::velmora(
        {"--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "status"}, {"NO_COLOR=1"});
    ASSERT_EQ(laptop.status, 0) << laptop.err;
    EXPECT_THAT(lineWith(laptop.out, "Local snapshots hold 62 GB (12%) of /"), HasSubstr("velmora accounting /"));
    const auto insights = clitest::velmora(
        {"--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "insights"}, {"NO_COLOR=1"});
    ASSERT_EQ(insights.status, 0) << insights.err;
    EXPECT_THAT(insights.out, HasSubstr("Local snapshots hold 62 GB"));
    EXPECT_THAT(insights.out, HasSubstr("Thin with btrfs subvolume delete"));
    EXPECT_THAT(insights.out, HasSubstr("velmora accounting"));

    const auto json =
        clitest::velmora({"--json", "--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "status"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json shares = Json::parse(json.out).at("snapshotShares");
    ASSERT_EQ(shares.size(), 1u);
    EXPECT_EQ(shares.at(0).at("mountPoint"), "/");

    // APFS reports no snapshot sizes: no line, however many snapshots there are.
    const auto mac =
        clitest::velmora({"--data-dir", data.path(), "--replay", machine("macbook-air-m2"), "status"}, {"NO_COLOR=1"});
    ASSERT_EQ(mac.status, 0) << mac.err;
    EXPECT_THAT(mac.out, Not(HasSubstr("Local snapshots hold")));
}

}  // namespace
}  // namespace corvel::cli
