// A small file-system image, loop-mounted in a temporary folder, for tests that need a real volume
// (ext4 by default; btrfs for snapshots). Needs root, loop devices and the mkfs tool; where one is
// missing the volume stays unmounted and says why, so the test skips with the reason. Only this
// image is ever mounted or unmounted.
//
//   const LoopVolume volume("btrfs", 300u << 20);
//   if (!volume.mounted()) GTEST_SKIP() << volume.skipReason();
#pragma once

#include "support/TemporaryFolder.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace corvel::testing {

class LoopVolume {
public:
    explicit LoopVolume(const std::string& type = "ext4", std::uintmax_t bytes = 8u << 20) {
        const std::string mkfs = "mkfs." + type;
        if (::geteuid() != 0) {
            skipReason_ = "needs root to loop-mount an image";
            return;
        }
        if (quietly("command -v " + mkfs) != 0) {
            skipReason_ = mkfs + " is not installed";
            return;
        }
        const std::string image = folder_.path("volume.img");
        mountPoint_ = folder_.makeFolder("mnt");
        { std::ofstream sizing(image, std::ios::binary); }
        std::filesystem::resize_file(image, bytes);
        // ext4's tool asks before writing to a plain file unless told it is meant.
        if (quietly(mkfs + (type == "ext4" ? " -q -F '" : " -q '") + image + "'") != 0) {
            skipReason_ = mkfs + " could not make an image";
            return;
        }
        if (quietly("mount -o loop '" + image + "' '" + mountPoint_ + "'") != 0) {
            skipReason_ = "loop mounting is not permitted here (no loop device or no mount rights)";
            return;
        }
        mounted_ = true;
    }
    // Unmounts before the folder goes; a volume still busy is detached rather than left behind.
    ~LoopVolume() {
        if (mounted_ && ::umount(mountPoint_.c_str()) != 0) ::umount2(mountPoint_.c_str(), MNT_DETACH);
    }
    LoopVolume(const LoopVolume&) = delete;
    LoopVolume& operator=(const LoopVolume&) = delete;

    bool mounted() const { return mounted_; }
    const std::string& skipReason() const { return skipReason_; }
    const std::string& mountPoint() const { return mountPoint_; }

    static int quietly(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

private:
    TemporaryFolder folder_;
    std::string mountPoint_;
    std::string skipReason_;
    bool mounted_ = false;
};

}  // namespace corvel::testing
