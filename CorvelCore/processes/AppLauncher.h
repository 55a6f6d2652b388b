// Starts an app again after it quit, the way the system would start it: on macOS by asking
// /usr/bin/open for the bundle (under a command policy that allows nothing else); on Linux with
// the command of the app's desktop entry, else its program, in a session of its own.
//
//   AppLauncher launcher(Platform::linux, machine.runner(ToolTimeout::inspection), local);
//   auto pid = launcher.launch(group);   // throws ProcessLaunchError or CommandError
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "common/Platform.h"
#include "processes/ProcessControlling.h"
#include "processes/ProcessGroup.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

class AppLaunching {
public:
    virtual ~AppLaunching() = default;
    // The new process's pid when the system tells it. Throws when the app cannot be started.
    virtual std::optional<std::int32_t> launch(const ProcessGroup& group) = 0;
};

class AppLauncher : public AppLaunching {
public:
    AppLauncher(Platform platform, CommandRunning& runner, ProcessControlling& control)
        : platform_(platform), runner_(runner), control_(control) {}

    std::optional<std::int32_t> launch(const ProcessGroup& group) override;

    // "/usr/bin/open -a BUNDLE" and nothing else.
    static const CommandPolicy& openPolicy();
    // The Linux command: the desktop entry's (`entryText` is the file at the group's appPath,
    // absent when unreadable), else the group's program alone. Empty when there is neither.
    static std::vector<std::string> linuxCommand(const ProcessGroup& group,
                                                 const std::optional<std::string>& entryText);

private:
    Platform platform_;
    CommandRunning& runner_;
    ProcessControlling& control_;
};

}  // namespace corvel
