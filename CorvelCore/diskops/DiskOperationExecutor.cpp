#include "diskops/DiskOperationExecutor.h"

#include "command/CommandError.h"
#include "common/Text.h"
#include "diskops/DiskOperationError.h"

#include <algorithm>

namespace corvel {
namespace {

// Tool output is shown and logged as text; bytes that are not UTF-8 become U+FFFD.
std::string replacingInvalidUTF8(const std::string& bytes) {
    std::string text;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t i = 0;
    while (i < bytes.size()) {
        const unsigned char c = data[i];
        std::size_t length = c < 0x80 ? 1 : (c >= 0xC2 && c <= 0xDF) ? 2 : (c & 0xF0) == 0xE0 ? 3
                                                                    : (c >= 0xF0 && c <= 0xF4) ? 4 : 0;
        bool valid = length > 0 && i + length <= bytes.size();
        for (std::size_t k = 1; valid && k < length; ++k) valid = (data[i + k] & 0xC0) == 0x80;
        if (valid && length == 3) {
            const unsigned char next = data[i + 1];
            valid = !(c == 0xE0 && next < 0xA0) && !(c == 0xED && next >= 0xA0);  // overlong, surrogates
        } else if (valid && length == 4) {
            const unsigned char next = data[i + 1];
            valid = !(c == 0xF0 && next < 0x90) && !(c == 0xF4 && next >= 0x90);
        }
        if (valid) {
            text.append(bytes, i, length);
            i += length;
        } else {
            text += "\xEF\xBF\xBD";
            ++i;
        }
    }
    return text;
}

}  // namespace

const CommandPolicy& DiskOperationExecutor::policy() {
    static const CommandPolicy policy{"/usr/sbin/diskutil",
                                      {{"mount"}, {"mountDisk"}, {"unmount"}, {"unmountDisk"}, {"eject"}, {"verifyVolume"}}};
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
            const auto output = std::string(trim(replacingInvalidUTF8(command.policy->run(command.arguments, runner_))));
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
