// `velmora accounting` on recorded machines: the split of a btrfs laptop's used space with the
// last scan from the data folder, its JSON, and the refusals.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/Json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel::cli {
namespace {

using clitest::lineWith;
using clitest::machine;
using ::testing::AllOf;
using ::testing::HasSubstr;

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

TEST(AccountingCommand, RefusesUnknownVolumesAndMacsForNow) {
    clitest::TemporaryFolder data;
    const auto unknown =
        clitest::velmora({"--data-dir", data.path(), "--replay", machine("linux-btrfs-laptop"), "accounting", "nope"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err, HasSubstr("unknown volume 'nope'"));
    const auto mac = clitest::velmora({"--data-dir", data.path(), "--replay", machine("macbook-air-m2"), "accounting"});
    EXPECT_EQ(mac.status, 1);
    EXPECT_THAT(mac.err, HasSubstr("accounting of APFS containers is not available yet"));
}

}  // namespace
}  // namespace corvel::cli
