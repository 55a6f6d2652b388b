// A small XFS image with reflinks, loop-mounted, for tests that need a real file system whose
// files share blocks. Making one needs root, loop devices and xfsprogs; where any of that is
// missing the volume stays unmounted and says why, so the tests skip with the reason instead of
// failing on a machine that simply cannot host it.
#pragma once

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "SpaceTestFiles.h"

namespace corvel::spacetest {

// Runs `command` through the shell with its output silenced; the shell's exit status.
inline int runQuietly(const std::string& command) {
    return std::system((command + " >/dev/null 2>&1").c_str());
}

class ReflinkVolume {
public:
    static constexpr std::uintmax_t imageBytes = 320ull << 20;

    ReflinkVolume() {
        if (::geteuid() != 0) {
            skipReason_ = "needs root to loop-mount an XFS image";
            return;
        }
        if (runQuietly("command -v mkfs.xfs") != 0) {
            skipReason_ = "mkfs.xfs (xfsprogs) is not installed";
            return;
        }
        workspace_ = std::make_unique<TemporaryFolder>();
        const std::string image = workspace_->path("xfs.img");
        mountPoint_ = workspace_->path("mnt");
        std::filesystem::create_directories(mountPoint_);
        { std::ofstream sizing(image, std::ios::binary); }
        std::filesystem::resize_file(image, imageBytes);
        if (runQuietly("mkfs.xfs -q -m reflink=1 '" + image + "'") != 0) {
            skipReason_ = "mkfs.xfs could not make a reflink-capable image";
            return;
        }
        if (runQuietly("mount -o loop '" + image + "' '" + mountPoint_ + "'") != 0) {
            skipReason_ = "loop mounting is not permitted here (no loop device or no mount rights)";
            return;
        }
        mounted_ = true;
    }

    // Unmounts before the workspace goes, or removing it would reach into the volume; a busy
    // volume is detached rather than left mounted.
    ~ReflinkVolume() {
        if (mounted_ && ::umount(mountPoint_.c_str()) != 0) ::umount2(mountPoint_.c_str(), MNT_DETACH);
    }

    ReflinkVolume(const ReflinkVolume&) = delete;
    ReflinkVolume& operator=(const ReflinkVolume&) = delete;

    bool mounted() const { return mounted_; }
    const std::string& skipReason() const { return skipReason_; }
    const std::string& mountPoint() const { return mountPoint_; }
    // The folder holding the image file and, below it, the mount point.
    std::string workspace() const { return workspace_ ? workspace_->root().string() : std::string(); }

private:
    std::unique_ptr<TemporaryFolder> workspace_;
    std::string mountPoint_;
    std::string skipReason_;
    bool mounted_ = false;
};

// One volume for the whole suite, since making it is slow; each test gets a fresh folder on it,
// named after the test, in `tree_`. Tests skip with the volume's reason when it could not mount.
class ReflinkVolumeTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { volume_ = std::make_unique<ReflinkVolume>(); }
    static void TearDownTestSuite() { volume_.reset(); }

    void SetUp() override {
        if (!volume_ || !volume_->mounted()) GTEST_SKIP() << (volume_ ? volume_->skipReason() : "no volume");
        tree_ = volume_->mountPoint() + "/" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::filesystem::create_directories(tree_);
    }

    void TearDown() override {
        if (!tree_.empty()) std::filesystem::remove_all(tree_);
    }

    static const ReflinkVolume& volume() { return *volume_; }

    // `bytes` of seeded noise at `path` (its folders made on the way): no two blocks alike, so
    // nothing is deduplicated or stored as holes behind the test's back.
    static void writeRandom(const std::string& path, std::size_t bytes, std::uint64_t seed = 42) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::mt19937_64 generator(seed);
        std::string data(bytes, '\0');
        for (char& c : data) c = static_cast<char>(generator());
        std::ofstream(path, std::ios::binary) << data;
    }

    std::string tree_;

private:
    static inline std::unique_ptr<ReflinkVolume> volume_;
};

}  // namespace corvel::spacetest
