// A child process a test starts and owns: a real process to find in a sample, to hold a file open,
// to quit or to kill. It runs in a process group of its own and is killed and reaped when the
// object goes away, so a failing test never leaves it behind.
//
//   ChildProcess sleeper({"/bin/sleep", "30"});
//   ChildProcess holder({"/bin/sh", "-c", "exec 3<\"$0\"; sleep 30", file});   // holds `file` open
//   EXPECT_TRUE(sleeper.isRunning());
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace corvel::testing {

class ChildProcess {
public:
    // Starts `arguments` (the first is the program, looked up in PATH); throws when it cannot.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    bool isRunning();
    // Waits up to `limit` for the child to end; its wait status, or absent when it still runs.
    std::optional<int> waitFor(std::chrono::milliseconds limit);

private:
    pid_t pid_ = -1;
    bool reaped_ = false;
};

// Polls `condition` every few milliseconds for up to `limit`; whether it became true.
bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit = std::chrono::seconds(5));

}  // namespace corvel::testing
