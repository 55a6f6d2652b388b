#include "updates/UpdateInstaller.h"

#include "command/CommandError.h"
#include "common/Text.h"
#include "updates/UpdateError.h"

namespace corvel::UpdateInstaller {
namespace {

// An AppleScript string literal: backslashes and double quotes escaped.
std::string appleScriptString(const std::string& text) {
    return "\"" + replaceAll(replaceAll(text, "\\", "\\\\"), "\"", "\\\"") + "\"";
}

std::string shellQuoted(const std::string& text) {
    return "'" + replaceAll(text, "'", "'\\''") + "'";
}

}  // namespace

Step stepFor(Platform platform) {
    return platform == Platform::macos ? Step::runInstaller : Step::printCommand;
}

std::string installerScript(const std::filesystem::path& package) {
    // "quoted form of" hands the path to the shell as one word, whatever it contains.
    return "do shell script \"/usr/sbin/installer -pkg \" & quoted form of " + appleScriptString(package.string()) +
           " & \" -target /\" with administrator privileges with prompt " + appleScriptString(prompt);
}

CommandPolicy installerPolicy(const std::filesystem::path& package) {
    return CommandPolicy{osascript, {{"-e", installerScript(package)}}};
}

void install(const std::filesystem::path& package, CommandRunning& runner) {
    try {
        installerPolicy(package).run({"-e", installerScript(package)}, runner);
    } catch (const CommandError& error) {
        throw UpdateError::failed("The installer did not finish: " + error.description());
    }
}

std::string manualCommand(const std::filesystem::path& package) {
    const std::string path = package.string();
    if (endsWith(path, ".deb")) return "sudo apt install " + shellQuoted(path);
    return "sudo tar -xzf " + shellQuoted(path) + " -C /usr/local --strip-components=1";
}

}  // namespace corvel::UpdateInstaller
