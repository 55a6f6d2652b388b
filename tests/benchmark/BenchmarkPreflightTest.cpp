#include "benchmark/BenchmarkJob.h"
#include "benchmark/BenchmarkOptions.h"
#include "benchmark/BenchmarkPreflight.h"
#include "benchmark/BenchmarkStatistics.h"
#include "benchmark/BenchmarkVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::Optional;

TEST(BenchmarkOptions, SizesAreReadWithBinaryAndDecimalUnits) {
    struct Case {
        const char* text;
        std::optional<std::int64_t> bytes;
    };
    for (const Case& c :
         {Case{"1GiB", 1LL << 30}, Case{"512MiB", 512LL << 20}, Case{"256m", 256LL << 20}, Case{"2GB", 2'000'000'000},
          Case{"4096", 4096}, Case{"1t", 1LL << 40}, Case{"0", {}}, Case{"-1G", {}}, Case{"GiB", {}}, Case{"1 GiB", {}},
          Case{"1XB", {}}, Case{"", {}}, Case{"99999999999T", {}}}) {
        EXPECT_EQ(BenchmarkOptions::parseSize(c.text), c.bytes) << c.text;
    }
}

TEST(BenchmarkOptions, ProblemsNameTheValue) {
    BenchmarkOptions options;
    options.folder = "/data";
    EXPECT_EQ(options.problem(), std::nullopt);
    options.fileBytes = 1000;
    EXPECT_THAT(options.problem(), Optional(HasSubstr("too small")));
    options.fileBytes = (3LL << 20) + 5;
    EXPECT_EQ(options.usableFileBytes(), 3LL << 20);
    options.secondsPerJob = 0;
    EXPECT_THAT(options.problem(), Optional(HasSubstr("0 seconds per test")));
    options.secondsPerJob = 61;
    EXPECT_THAT(options.problem(), Optional(HasSubstr("61 seconds")));
}

TEST(BenchmarkPreflight, RefusesInOrderOfWhatMattersMost) {
    BenchmarkOptions options;
    options.folder = "/mnt/x";
    options.fileBytes = 100LL << 20;
    const BenchmarkVolumeFacts roomy{"/mnt/x", "ext4", "8:1", false, 100LL << 30, 50LL << 30};
    EXPECT_EQ(BenchmarkPreflight::check(roomy, options, false), std::nullopt);

    auto readOnly = roomy;
    readOnly.isReadOnly = true;
    readOnly.fileSystemType = "nfs4";
    EXPECT_THAT(BenchmarkPreflight::check(readOnly, options, true),
                Optional(Field(&BenchmarkRefusal::reason, BenchmarkRefusalReason::readOnly)));

    auto network = roomy;
    network.fileSystemType = "fuse.sshfs";
    EXPECT_THAT(BenchmarkPreflight::check(network, options, false),
                Optional(Field(&BenchmarkRefusal::message, HasSubstr("/mnt/x is a network volume (fuse.sshfs)"))));
    options.allowNetwork = true;
    EXPECT_EQ(BenchmarkPreflight::check(network, options, false), std::nullopt);

    auto tight = roomy;  // the file fits, but not with the margin beside it
    tight.availableBytes = (100LL << 20) + BenchmarkPreflight::spaceMargin - 1;
    EXPECT_THAT(BenchmarkPreflight::check(tight, options, false),
                Optional(Field(&BenchmarkRefusal::reason, BenchmarkRefusalReason::noSpace)));
    tight.availableBytes += 1;
    EXPECT_EQ(BenchmarkPreflight::check(tight, options, false), std::nullopt);

    EXPECT_THAT(BenchmarkPreflight::check(roomy, options, true),
                Optional(Field(&BenchmarkRefusal::message, HasSubstr("already being measured"))));
}

TEST(BenchmarkPreflight, NetworkFileSystemsAreToldFromLocalOnes) {
    for (const char* type : {"nfs", "nfs4", "cifs", "smbfs", "afpfs", "webdav", "fuse.sshfs", "9p"})
        EXPECT_TRUE(BenchmarkPreflight::isNetworkFileSystem(type)) << type;
    for (const char* type : {"ext4", "xfs", "btrfs", "apfs", "tmpfs", "fuse", "", "nfsd"})
        EXPECT_FALSE(BenchmarkPreflight::isNetworkFileSystem(type)) << type;
}

TEST(BenchmarkVolume, TheMountHoldingAPathIsTheDeepestOfItsDevice) {
    const auto mounts = MountInfoEntry::parse(
        "22 1 8:2 / / rw - ext4 /dev/sda2 rw\n"
        "40 22 0:50 / /home/me/net rw - nfs4 server:/x rw\n"
        "41 22 8:2 /srv /bind ro - ext4 /dev/sda2 rw\n"
        "42 22 8:2 /srv /bind rw - ext4 /dev/sda2 rw\n");
    EXPECT_THAT(BenchmarkVolume::mountHolding(mounts, "/home/me/net/a", "0:50"),
                Optional(Field(&MountInfoEntry::fileSystemType, "nfs4")));
    EXPECT_THAT(BenchmarkVolume::mountHolding(mounts, "/home/me/netx", "8:2"),
                Optional(Field(&MountInfoEntry::mountPoint, "/")));
    // Mounted over an earlier mount at the same point: the later one is what a path reaches.
    EXPECT_THAT(BenchmarkVolume::mountHolding(mounts, "/bind/a", "8:2"), Optional(Field(&MountInfoEntry::mountID, 42)));
    // A device that no line names (an overlay, a container): the deepest containing mount.
    EXPECT_THAT(BenchmarkVolume::mountHolding(mounts, "/home/me/net", "0:99"),
                Optional(Field(&MountInfoEntry::mountID, 40)));
}

TEST(BenchmarkJob, TheStandardSetRunsSequentialBeforeRandomAndDeepBeforeShallow) {
    std::vector<std::string> names;
    for (const auto& job : BenchmarkJob::standardSet()) names.push_back(job.name());
    EXPECT_THAT(names, ElementsAre("SEQ1M Q8 write", "SEQ1M Q8 read", "SEQ1M Q1 write", "SEQ1M Q1 read",
                                   "RND4K Q32 read", "RND4K Q32 write", "RND4K Q1 read", "RND4K Q1 write"));
}

TEST(BenchmarkStatistics, RatesFollowFromOperationsAndTime) {
    LatencyHistogram latencies;
    for (int i = 0; i < 10; ++i) latencies.record(2'000'000);
    const auto result = BenchmarkStatistics::summarise({IOPattern::sequentialRead, 1 << 20, 8}, 1000, 2.0, latencies);
    EXPECT_EQ(result.bytesMoved, 1000LL << 20);
    EXPECT_DOUBLE_EQ(result.iops, 500);
    EXPECT_DOUBLE_EQ(result.megabytesPerSecond, 1000.0 * (1 << 20) / 2.0 / 1e6);
    EXPECT_DOUBLE_EQ(result.latencyP99Micros, 2000);
    const auto idle = BenchmarkStatistics::summarise({IOPattern::randomRead, 4096, 1}, 0, 0, LatencyHistogram{});
    EXPECT_EQ(idle.iops, 0);
    EXPECT_EQ(idle.megabytesPerSecond, 0);

    EXPECT_EQ(BenchmarkStatistics::median({3, 1, 2}), 2);
    EXPECT_EQ(BenchmarkStatistics::median({4, 1, 3, 2}), 2.5);
    EXPECT_EQ(BenchmarkStatistics::median({}), 0);
}

}  // namespace
}  // namespace corvel
