// The only code that changes the state of a disk. It runs an operation only when confirmed and
// backed by a preflight report for the same operation and target without failures, through a
// policy that admits nothing but the five executable operations, and never with "force".
//
//   DiskOperationExecutor executor(machine.runner(ToolTimeout::action));
//   std::string output = executor.run(DiskOperation::unmount, target, report, /*confirmed=*/true);
//   auto folder = DiskOperationExecutor::createDirectory("Exports", "/Volumes/Backup", true);
//
// On Linux the same operations go to udisks and fsck (see LinuxDiskCommands); macOS uses the disk
// tool. Everything above the argument lists is shared.
#pragma once

#include "command/CommandPolicy.h"
#include "command/CommandRunning.h"
#include "common/Platform.h"
#include "diskops/DiskCommand.h"
#include "diskops/DiskObject.h"
#include "diskops/DiskOperation.h"
#include "diskops/LinuxDiskCommands.h"
#include "diskops/PreflightReport.h"

#include <filesystem>
#include <string>
#include <vector>

namespace corvel {

class DiskOperationExecutor {
public:
    // The disk tool: "/usr/sbin/diskutil" with mount, mountDisk, unmount, unmountDisk, eject and
    // verifyVolume, nothing else.
    static const CommandPolicy& policy();

    explicit DiskOperationExecutor(CommandRunning& runner) : runner_(runner) {}
    // `members`: on Linux, the file systems of the target's disk (see LinuxDiskCommands).
    DiskOperationExecutor(CommandRunning& runner, Platform platform, LinuxDiskCommands::DiskMembers members = {})
        : runner_(runner), platform_(platform), members_(std::move(members)) {}

    // The tool's output, trimmed. Throws DiskOperationError (notConfirmed, notExecutable,
    // preflightFailed, commandFailed) and CommandError::notAllowed for a "force" argument.
    std::string run(DiskOperation operation, const DiskObject& target, const PreflightReport& preflight,
                    bool confirmed) const;

    // The disk tool's arguments. Throws DiskOperationError::notExecutable for anything but mount,
    // unmount, eject and verify.
    static std::vector<std::string> arguments(DiskOperation operation, const DiskObject& target);

    // Every program run `run` would make on this platform, in order, with the policy of each.
    std::vector<DiskCommand> commands(DiskOperation operation, const DiskObject& target) const;

    // The second fence: an argument that, lower-cased, is "force", "-f" or "--force".
    static bool isForceArgument(const std::string& argument);

    // Makes the folder `name` (trimmed) directly in `parent`; returns its location. Throws
    // DiskOperationError (notConfirmed, invalidName, alreadyExists); file-system errors pass through.
    static std::filesystem::path createDirectory(const std::string& name, const std::filesystem::path& parent,
                                                 bool confirmed);

private:
    CommandRunning& runner_;
    Platform platform_ = Platform::macos;
    LinuxDiskCommands::DiskMembers members_;
};

}  // namespace corvel
