// The live Linux readers on the machine running the tests (built on Linux only).
#include "platform/linux/ProcMountTable.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/PlatformStorage.h"

#include "command/ProcessCommandRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using namespace corvel;

TEST(ProcMountTable, ReadsTheRealMountTableAndCapacities) {
    ProcMountTable table;
    auto entries = MountInfoEntry::parse(table.mountInfo());
    EXPECT_TRUE(
        std::any_of(entries.begin(), entries.end(), [](const MountInfoEntry& e) { return e.mountPoint == "/"; }));

    StatvfsFigures root = table.statvfs("/");
    EXPECT_GT(root.totalBytes, 0);
    EXPECT_LE(root.availableBytes, root.freeBytes);
    EXPECT_LE(root.freeBytes, root.totalBytes);

    EXPECT_THAT([&] { table.statvfs("/no/such/mount/point"); },
                ::testing::ThrowsMessage<std::runtime_error>(::testing::HasSubstr("/no/such/mount/point")));
}

TEST(PlatformStorage, LiveDiscoveryFindsTheRootFileSystem) {
    ProcessCommandRunner runner(20);
    const TimePoint now = std::chrono::time_point_cast<TimePoint::duration>(std::chrono::system_clock::now());
    StorageSnapshot snapshot = PlatformStorage::discover(runner, now);
    EXPECT_EQ(snapshot.capturedAt, now);
    ASSERT_FALSE(snapshot.volumes.empty());
    EXPECT_EQ(snapshot.volumes.front().mountPoint, "/");
    EXPECT_TRUE(snapshot.volumes.front().isBootVolume);
    EXPECT_GT(snapshot.volumes.front().totalBytes, 0);
    for (const auto& volume : snapshot.volumes) {
        EXPECT_EQ(std::count_if(snapshot.volumes.begin(), snapshot.volumes.end(),
                                [&](const StorageVolume& other) { return other.id == volume.id; }),
                  1)
            << volume.id;
    }
}
