// A small ext4 image, loop-mounted in a temporary folder, for tests that need a real volume to
// hold files on. Needs root and loop devices; where either is missing the volume stays unmounted
// and says why, so the tests skip with the reason. Only this image is ever mounted or unmounted.
#pragma once

#include "support/TemporaryFolder.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace corvel::diskopstest {

class LoopVolume {
public:
    LoopVolume() {
        if (::geteuid() != 0) {
            skipReason_ = "needs root to loop-mount an image";
            return;
        }
        const std::string image = folder_.path("volume.img");
        mountPoint_ = folder_.makeFolder("mnt");
        { std::ofstream sizing(image, std::ios::binary); }
        std::filesystem::resize_file(image, 8u << 20);
        if (quietly("mkfs.ext4 -q -F '" + image + "'") != 0) {
            skipReason_ = "mkfs.ext4 could not make an image";
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

private:
    static int quietly(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

    testing::TemporaryFolder folder_;
    std::string mountPoint_;
    std::string skipReason_;
    bool mounted_ = false;
};

}  // namespace corvel::diskopstest
