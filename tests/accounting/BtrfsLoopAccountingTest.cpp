// A real btrfs image, loop-mounted in a temporary folder, with a subvolume and a read-only
// snapshot of it: the account must find the snapshot and give it the exclusive size that
// `btrfs filesystem du` reports, and its parts must close exactly on the used space. Skips with
// the reason where root, loop devices or btrfs-progs are missing.
#include "accounting/AccountingSources.h"
#include "accounting/BtrfsParser.h"
#include "accounting/VolumeAccounting.h"
#include "command/ProcessCommandRunner.h"
#include "support/LoopVolume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

namespace corvel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Optional;

std::string output(const std::string& command) {
    std::string text;
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::array<char, 4096> buffer{};
    while (pipe && std::fgets(buffer.data(), buffer.size(), pipe.get())) text += buffer.data();
    return text;
}

TEST(BtrfsLoopAccounting, SnapshotHoldsWhatDuSaysAndThePartsCloseOnTheUsedSpace) {
    const testing::LoopVolume volume("btrfs", 300u << 20);
    if (!volume.mounted()) GTEST_SKIP() << volume.skipReason();
    const auto runQuietly = testing::LoopVolume::quietly;
    const std::string& mountPoint = volume.mountPoint();
    const std::string home = mountPoint + "/home";
    const std::string snapshot = mountPoint + "/.snapshots/home-1";
    ASSERT_EQ(runQuietly("btrfs subvolume create '" + home + "'"), 0);
    {
        std::ofstream kept(home + "/kept", std::ios::binary);
        const std::string block(1 << 20, 'k');
        for (int i = 0; i < 8; ++i) kept << block;
    }
    std::filesystem::create_directories(mountPoint + "/.snapshots");
    ASSERT_EQ(runQuietly("btrfs subvolume snapshot -r '" + home + "' '" + snapshot + "'"), 0);
    // Deleting the file leaves its blocks to the snapshot alone: space no folder walk of home sees.
    std::filesystem::remove(home + "/kept");
    ASSERT_EQ(runQuietly("sync"), 0);

    const auto oracle = BtrfsParser::parseFilesystemDu(output("btrfs filesystem du -s --raw '" + snapshot + "'"));
    ASSERT_EQ(oracle.size(), 1u);
    ASSERT_GE(oracle[0].exclusiveBytes, 8 << 20);

    auto sources = liveAccountingSources();
    ProcessCommandRunner runner(30);
    const auto account = VolumeAccounting::read(mountPoint, *sources, runner, std::nullopt);

    EXPECT_TRUE(account.warnings.empty()) << ::testing::PrintToString(account.warnings);
    EXPECT_EQ(account.fileSystemType, "btrfs");
    EXPECT_THAT(account.snapshots, ElementsAre(Field(&LocalSnapshot::bytes, Optional(oracle[0].exclusiveBytes))));
    EXPECT_THAT(account.rows, Contains(AccountingRow{AccountingPart::snapshots, oracle[0].exclusiveBytes,
                                                     "btrfs filesystem du", "1 snapshot"}));
    std::int64_t total = 0;
    for (const auto& row : account.rows) {
        ASSERT_TRUE(row.bytes) << label(row.part);
        total += row.part == AccountingPart::countedTwice ? -*row.bytes : *row.bytes;
    }
    EXPECT_EQ(total, account.usedBytes);
}

}  // namespace
}  // namespace corvel
