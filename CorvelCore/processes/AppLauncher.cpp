#include "processes/AppLauncher.h"

#include "common/AtomicFile.h"
#include "processes/DesktopEntry.h"

namespace corvel {
namespace {

constexpr std::size_t entryReadLimit = 256 * 1024;

}  // namespace

const CommandPolicy& AppLauncher::openPolicy() {
    static const CommandPolicy policy{"/usr/bin/open", {{"-a"}}};
    return policy;
}

std::vector<std::string> AppLauncher::linuxCommand(const ProcessGroup& group,
                                                   const std::optional<std::string>& entryText) {
    if (entryText && group.appPath)
        if (const auto entry = DesktopEntry::parse(*entryText, *group.appPath)) return entry->command;
    if (group.executablePath) return {*group.executablePath};
    return {};
}

std::optional<std::int32_t> AppLauncher::launch(const ProcessGroup& group) {
    if (!group.appPath) throw ProcessLaunchError("'" + group.name + "' is not an app");
    if (platform_ == Platform::macos) {
        openPolicy().run({"-a", *group.appPath}, runner_);
        return std::nullopt;
    }
    std::optional<std::string> entryText;
    try {
        entryText = AtomicFile::read(*group.appPath, entryReadLimit);
    } catch (const FileError&) {
        // The program itself will do.
    }
    const auto command = linuxCommand(group, entryText);
    if (command.empty()) throw ProcessLaunchError("no command starts '" + group.name + "'");
    return control_.startDetached(command);
}

}  // namespace corvel
