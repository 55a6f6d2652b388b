// A bind mount of one folder of a test's temporary folder onto another folder of the same
// temporary folder, undone when the object goes. Only ever inside a temporary folder; where
// mounting is not permitted (not root, no CAP_SYS_ADMIN, not Linux) `reason` says why and the
// test skips.
#pragma once

#include <cerrno>
#include <cstring>
#include <string>

#if defined(__linux__)
#include <sys/mount.h>
#endif

namespace corvel::spacetest {

class BindMount {
public:
    BindMount(const std::string& source, const std::string& target) : target_(target) {
#if defined(__linux__)
        if (::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0) {
            reason_ = std::string("cannot bind-mount here (needs root and CAP_SYS_ADMIN): ") + std::strerror(errno);
            return;
        }
        mounted_ = true;
#else
        (void)source;
        reason_ = "bind mounts are only scripted for Linux";
#endif
    }
    ~BindMount() {
#if defined(__linux__)
        if (mounted_) ::umount2(target_.c_str(), MNT_DETACH);
#endif
    }
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;

    bool mounted() const { return mounted_; }
    const std::string& reason() const { return reason_; }

private:
    std::string target_;
    std::string reason_;
    bool mounted_ = false;
};

}  // namespace corvel::spacetest
