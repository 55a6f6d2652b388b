// One agent per user: a lock on a file in the data folder, held for as long as the object lives
// and released by the system if the process dies, so a crash never leaves a stale lock behind.
//
//   auto lock = InstanceLock::acquire(files.lock());    // absent: another process holds it
//   if (!lock) fail("another agent is running (pid " + std::to_string(*InstanceLock::holder(files.lock())) + ")");
#pragma once

#include "common/UniqueFd.h"

#include <filesystem>
#include <optional>
#include <sys/types.h>

namespace corvel {

class InstanceLock {
public:
    // Throws FileError when the lock file cannot be created; absent when another process holds it.
    static std::optional<InstanceLock> acquire(const std::filesystem::path& path);
    // The process that holds the lock, without taking it; absent when nobody does.
    static std::optional<pid_t> holder(const std::filesystem::path& path);

    InstanceLock(InstanceLock&&) = default;
    InstanceLock& operator=(InstanceLock&&) = default;

private:
    explicit InstanceLock(UniqueFd fd) : fd_(std::move(fd)) {}
    UniqueFd fd_;
};

}  // namespace corvel
