#include "diskops/DiskOperationExecutor.h"

#include "command/CommandError.h"
#include "common/Text.h"
#include "diskops/DiskOperationError.h"

#include <algorithm>

namespace corvel {

const CommandPolicy& DiskOperationExecutor::policy() {
    static const CommandPolicy policy{
        "/usr/sbin/diskutil", {{"mount"}, {"mountDisk"}, {"unmount"}, {"unmountDisk"}, {"eject"}, {"verifyVolume"}}};
    return policy;
}

std::vector<std::string> DiskOperationExecutor::arguments(DiskOperation operation, const DiskObject& target) {
    const bool wholeDisk = target.kind == DiskObjectKind::physicalDisk;
    switch (operation) {
        case DiskOperation::mount:
            return {wholeDisk ? "mountDisk" : "mount", target.identifier};
        case DiskOperation::unmount:
            return {wholeDisk ? "unmountDisk" : "unmount", target.mountPoint.value_or(target.identifier)};
        case DiskOperation::eject:
            return {"eject", target.physicalDiskID.value_or(target.identifier)};
        case DiskOperation::verifyVolume:
            return {"verifyVolume", target.identifier};
        default:
            throw DiskOperationError::notExecutable(operation);
    }
}

std::vector<DiskCommand> DiskOperationExecutor::commands(DiskOperation operation, const DiskObject& target) const {
    if (platform_ == Platform::linux) return LinuxDiskCommands::commands(operation, target, members_);
    return {{&policy(), arguments(operation, target)}};
}

bool DiskOperationExecutor::isForceArgument(const std::string& argument) {
    const auto lower = toLower(argument);
    return lower == "force" || lower == "-f" || lower == "--force";
}

std::string DiskOperationExecutor::run(DiskOperation operation, const DiskObject& target,
                                       const PreflightReport& preflight, bool confirmed) const {
    if (!confirmed) throw DiskOperationError::notConfirmed();
    if (!isExecutableInThisBuild(operation)) throw DiskOperationError::notExecutable(operation);
    if (preflight.operation != operation || preflight.target.identifier != target.identifier || !preflight.canProceed())
        throw DiskOperationError::preflightFailed(preflight.canProceed() ? std::vector<std::string>{}
                                                                         : preflight.failures());
    // The preflight already refuses this; a hand-made report must not get around it.
    if (operation == DiskOperation::eject && (target.isInternal || target.isBootVolume))
        throw DiskOperationError::preflightFailed({"Internal and startup disks can't be ejected."});

    const auto planned = commands(operation, target);
    for (const auto& command : planned)
        for (const auto& argument : command.arguments)
            if (isForceArgument(argument)) throw CommandError::notAllowed(toLower(argument));

    std::vector<std::string> outputs;
    for (const auto& command : planned) {
        try {
            const auto output = std::string(trim(repairedUTF8(command.policy->run(command.arguments, runner_))));
            if (!output.empty()) outputs.push_back(output);
        } catch (const CommandError& error) {
            throw DiskOperationError::commandFailed(error.description());
        }
    }
    return join(outputs, "\n");
}

std::filesystem::path DiskOperationExecutor::createDirectory(const std::string& name,
                                                             const std::filesystem::path& parent, bool confirmed) {
    if (!confirmed) throw DiskOperationError::notConfirmed();
    const std::string trimmed(trim(name));
    if (trimmed.empty() || trimmed == "." || trimmed == ".." || contains(trimmed, "/") || contains(trimmed, ":"))
        throw DiskOperationError::invalidName(name);
    const auto location = parent / trimmed;
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(location, error)))
        throw DiskOperationError::alreadyExists(location.string());
    // Someone may have made it between the test above and now; that is the same answer.
    if (!std::filesystem::create_directory(location)) throw DiskOperationError::alreadyExists(location.string());
    return location;
}

}  // namespace corvel
