// Clone accounting on a real file system that shares blocks: a small XFS image with reflinks,
// loop-mounted for the duration of the suite. Needs root, loop devices and xfsprogs; the tests
// skip themselves with the reason where any of that is missing.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "ReflinkVolume.h"
#include "space/FileAttributes.h"
#include "space/PhysicalFootprint.h"
#include "support/ChildProcess.h"

namespace corvel {
namespace {

PhysicalFootprint::Result measureLive(const std::string& root) {
    ScanProgress progress;
    return PhysicalFootprint::measure(root, {}, progress, nullptr);
}

namespace fs = std::filesystem;

class ReflinkFootprint : public spacetest::ReflinkVolumeTest {
protected:
    static bool reflink(const std::string& from, const std::string& to) {
        return spacetest::runQuietly("cp --reflink=always '" + from + "' '" + to + "'") == 0;
    }

    static std::string workspace() { return volume().workspace(); }
};

constexpr std::int64_t megabyte = 1 << 20;

TEST_F(ReflinkFootprint, AReflinkedCopyCountsOnceInUniquePhysicalBytes) {
    writeRandom(tree_ + "/original", megabyte);
    ASSERT_TRUE(reflink(tree_ + "/original", tree_ + "/clone"));
    writeRandom(tree_ + "/independent", megabyte);

    EXPECT_EQ(measureLive(tree_).total, (PhysicalFootprint::Totals{3 * megabyte, 3 * megabyte, 2 * megabyte, 3, 0}));
}

TEST_F(ReflinkFootprint, TwinsHoldNoExclusiveBytesWhileBothExist) {
    writeRandom(tree_ + "/original", megabyte);
    ASSERT_TRUE(reflink(tree_ + "/original", tree_ + "/clone"));

    const auto original = FileAttributes::facts(tree_ + "/original");
    const auto clone = FileAttributes::facts(tree_ + "/clone");
    ASSERT_TRUE(original && clone);
    EXPECT_EQ(original->allocatedBytes, megabyte);
    EXPECT_EQ(original->exclusiveBytes, std::optional<std::int64_t>(0));
    EXPECT_EQ(clone->exclusiveBytes, std::optional<std::int64_t>(0));
    EXPECT_EQ(FileAttributes::physicalExtents(tree_ + "/original", megabyte),
              FileAttributes::physicalExtents(tree_ + "/clone", megabyte));

    // Once the twin is gone, every block is the original's own again. XFS frees an unlinked
    // file's blocks in the background (deferred inode inactivation), after a sync, so wait for it.
    fs::remove(tree_ + "/clone");
    ::sync();
    std::optional<FileSizeFacts> alone;
    EXPECT_TRUE(corvel::testing::eventually([&] {
        alone = FileAttributes::facts(tree_ + "/original");
        return alone && alone->exclusiveBytes == std::optional<std::int64_t>(megabyte);
    })) << (alone && alone->exclusiveBytes ? *alone->exclusiveBytes : -1);
}

TEST_F(ReflinkFootprint, AClonePartlyOverwrittenOwnsOnlyTheNewBlocks) {
    writeRandom(tree_ + "/original", megabyte);
    ASSERT_TRUE(reflink(tree_ + "/original", tree_ + "/clone"));
    {
        std::fstream clone(tree_ + "/clone", std::ios::in | std::ios::out | std::ios::binary);
        clone.seekp(0);
        clone << std::string(64 * 1024, 'z');
    }
    const auto clone = FileAttributes::facts(tree_ + "/clone");
    ASSERT_TRUE(clone);
    EXPECT_EQ(clone->exclusiveBytes, std::optional<std::int64_t>(64 * 1024));

    const auto result = measureLive(tree_);
    EXPECT_EQ(result.total.uniquePhysicalBytes, megabyte + 64 * 1024);
}

TEST_F(ReflinkFootprint, AMountPointBelowTheRootIsNotEntered) {
    writeRandom(tree_ + "/on-xfs", megabyte);
    // The workspace holds the image file and, below it, the mounted XFS volume.
    const auto result = measureLive(workspace());
    EXPECT_EQ(result.total.fileCount, 1);  // the image, nothing from inside the mount
    EXPECT_EQ(result.total.logicalBytes, 320ll << 20);
    EXPECT_EQ(result.deniedDirectories, 0);
}

}  // namespace
}  // namespace corvel
