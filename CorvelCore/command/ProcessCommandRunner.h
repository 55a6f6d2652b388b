// Runs a tool as a child process: no shell, LC_ALL=C so numbers and messages are unlocalised,
// standard input from /dev/null so a tool that asks a question reads end-of-file, both output
// pipes drained together so a chatty tool can never deadlock us, and a time-out that asks the
// tool politely to stop (SIGTERM).
//
//   ProcessCommandRunner runner(20);
//   std::string plist = DiskutilClient(runner).listPhysical();
#pragma once

#include "command/CommandRunning.h"

namespace corvel {

class ProcessCommandRunner : public CommandRunning {
public:
    explicit ProcessCommandRunner(double timeoutSeconds) : timeout_(timeoutSeconds) {}

    std::string run(const std::string& executable, const std::vector<std::string>& arguments) override;

    double timeout() const { return timeout_; }

private:
    double timeout_;
};

}  // namespace corvel
