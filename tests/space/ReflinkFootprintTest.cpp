// Clone accounting on a real file system that shares blocks: a small XFS image with reflinks,
// loop-mounted for the duration of the suite. Needs root, loop devices and xfsprogs; the tests
// skip themselves with the reason where any of that is missing.
#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "FootprintTestFolder.h"
#include "space/FileAttributes.h"
#include "space/PhysicalFootprint.h"

namespace corvel {
namespace {

namespace fs = std::filesystem;

int run(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str());
}

class ReflinkFootprint : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (geteuid() != 0) {
            skipReason_ = "needs root to loop-mount an XFS image";
            return;
        }
        if (run("command -v mkfs.xfs") != 0) {
            skipReason_ = "mkfs.xfs (xfsprogs) is not installed";
            return;
        }
        workspace_ = new spacetest::FootprintTestFolder();
        const std::string image = workspace_->path("xfs.img");
        mountPoint_ = workspace_->path("mnt");
        fs::create_directories(mountPoint_);
        { std::ofstream sizing(image, std::ios::binary); }
        fs::resize_file(image, 320ull << 20);
        if (run("mkfs.xfs -q -m reflink=1 '" + image + "'") != 0) {
            skipReason_ = "mkfs.xfs could not make a reflink-capable image";
            return;
        }
        if (run("mount -o loop '" + image + "' '" + mountPoint_ + "'") != 0) {
            skipReason_ = "loop mounting is not permitted here (no loop device or no mount rights)";
            return;
        }
        mounted_ = true;
    }

    static void TearDownTestSuite() {
        if (mounted_ && umount(mountPoint_.c_str()) != 0) umount2(mountPoint_.c_str(), MNT_DETACH);
        mounted_ = false;
        delete workspace_;
        workspace_ = nullptr;
    }

    void SetUp() override {
        if (!mounted_) GTEST_SKIP() << skipReason_;
        tree_ = mountPoint_ + "/" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::create_directories(tree_);
    }

    void TearDown() override {
        if (!tree_.empty()) fs::remove_all(tree_);
    }

    static void writeRandom(const std::string& path, std::size_t bytes) {
        std::mt19937_64 generator(42);
        std::string data(bytes, '\0');
        for (char& c : data) c = static_cast<char>(generator());
        std::ofstream(path, std::ios::binary) << data;
    }

    static bool reflink(const std::string& from, const std::string& to) {
        return run("cp --reflink=always '" + from + "' '" + to + "'") == 0;
    }

    static std::string workspace() { return workspace_->root().string(); }

    std::string tree_;

private:
    static inline spacetest::FootprintTestFolder* workspace_ = nullptr;
    static inline std::string mountPoint_;
    static inline std::string skipReason_;
    static inline bool mounted_ = false;
};

constexpr std::int64_t megabyte = 1 << 20;

TEST_F(ReflinkFootprint, AReflinkedCopyCountsOnceInUniquePhysicalBytes) {
    writeRandom(tree_ + "/original", megabyte);
    ASSERT_TRUE(reflink(tree_ + "/original", tree_ + "/clone"));
    writeRandom(tree_ + "/independent", megabyte);

    const auto result = PhysicalFootprint::measure(tree_, {}, nullptr, nullptr);
    EXPECT_EQ(result.total.fileCount, 3);
    EXPECT_EQ(result.total.unreadableFiles, 0);
    EXPECT_EQ(result.total.logicalBytes, 3 * megabyte);
    EXPECT_EQ(result.total.allocatedBytes, 3 * megabyte);
    EXPECT_EQ(result.total.uniquePhysicalBytes, 2 * megabyte);
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
    // file's blocks in the background; a sync waits for that.
    fs::remove(tree_ + "/clone");
    ::sync();
    const auto alone = FileAttributes::facts(tree_ + "/original");
    ASSERT_TRUE(alone);
    EXPECT_EQ(alone->exclusiveBytes, std::optional<std::int64_t>(megabyte));
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

    const auto result = PhysicalFootprint::measure(tree_, {}, nullptr, nullptr);
    EXPECT_EQ(result.total.uniquePhysicalBytes, megabyte + 64 * 1024);
}

TEST_F(ReflinkFootprint, AMountPointBelowTheRootIsNotEntered) {
    writeRandom(tree_ + "/on-xfs", megabyte);
    // The workspace holds the image file and, below it, the mounted XFS volume.
    const auto result = PhysicalFootprint::measure(workspace(), {}, nullptr, nullptr);
    EXPECT_EQ(result.total.fileCount, 1);  // the image, nothing from inside the mount
    EXPECT_EQ(result.total.logicalBytes, 320ll << 20);
    EXPECT_EQ(result.deniedDirectories, 0);
}

}  // namespace
}  // namespace corvel
