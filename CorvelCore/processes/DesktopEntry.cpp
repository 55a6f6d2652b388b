#include "processes/DesktopEntry.h"

#include "common/PathText.h"
#include "common/Text.h"

#include <set>

namespace corvel {
namespace {

// Programs that start many different applications, so their name says nothing about which.
bool isSharedLauncher(std::string_view program) {
    static const std::set<std::string, std::less<>> launchers{
        "sh",   "bash", "dash", "zsh",     "env",  "python", "python3", "perl",       "ruby",
        "node", "java", "gjs",  "flatpak", "snap", "wine",   "mono",    "gtk-launch", "xdg-open",
    };
    if (launchers.count(program)) return true;
    // python3.11 and the like
    return startsWith(program, "python") || startsWith(program, "perl5");
}

// The string escapes every desktop-entry value may hold.
std::string unescapeValue(std::string_view value) {
    std::string result;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            result += value[i];
            continue;
        }
        switch (value[++i]) {
            case 's':
                result += ' ';
                break;
            case 'n':
                result += '\n';
                break;
            case 't':
                result += '\t';
                break;
            case 'r':
                result += '\r';
                break;
            case '\\':
                result += '\\';
                break;
            default:
                // Quoting escapes such as \" belong to the Exec rules, applied after this.
                result += '\\';
                result += value[i];
        }
    }
    return result;
}

bool isFieldCode(std::string_view word) {
    return word.size() == 2 && word[0] == '%' &&
           std::string_view("fFuUdDnNickvm").find(word[1]) != std::string_view::npos;
}

std::optional<std::string> firstOwnProgram(const std::vector<std::string>& command) {
    std::size_t index = 0;
    // "env NAME=value program ..." starts `program`.
    if (index < command.size() && lastComponent(command[index]) == "env") {
        ++index;
        while (index < command.size() &&
               (command[index].find('=') != std::string::npos || startsWith(command[index], "-"))) {
            // The options that take a value of their own.
            const bool takesValue = command[index] == "-u" || command[index] == "--unset" || command[index] == "-C" ||
                                    command[index] == "--chdir";
            index += takesValue ? 2 : 1;
        }
    }
    if (index >= command.size()) return std::nullopt;
    const auto program = lastComponent(command[index]);
    if (program.empty() || isSharedLauncher(program)) return std::nullopt;
    return program;
}

}  // namespace

std::optional<std::vector<std::string>> DesktopEntry::splitExec(std::string_view exec) {
    const std::string text = unescapeValue(exec);
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c == '"') {
                quoted = false;
            } else if (c == '\\' && i + 1 < text.size() &&
                       std::string_view("\"`$\\").find(text[i + 1]) != std::string_view::npos) {
                word += text[++i];
            } else {
                word += c;
            }
        } else if (c == '"') {
            quoted = true;
            inWord = true;
        } else if (c == ' ' || c == '\t') {
            if (inWord) words.push_back(std::move(word));
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (quoted) return std::nullopt;
    if (inWord) words.push_back(std::move(word));
    // Field codes stand for files and URLs the desktop would pass; a relaunch passes none.
    std::vector<std::string> command;
    for (auto& each : words) {
        if (isFieldCode(each)) continue;
        command.push_back(replaceAll(each, "%%", "%"));
    }
    return command;
}

std::optional<DesktopEntry> DesktopEntry::parse(std::string_view text, const std::string& path) {
    DesktopEntry entry;
    entry.path = path;
    entry.id = lastComponent(path);
    if (endsWith(entry.id, ".desktop")) entry.id.resize(entry.id.size() - 8);
    bool inEntry = false;
    bool sawEntry = false;
    std::optional<std::string> type;
    std::optional<std::string> exec;
    bool hidden = false;
    for (const auto& rawLine : split(text, '\n')) {
        const auto line = trim(rawLine);
        if (line.empty() || line.front() == '#') continue;
        if (line.front() == '[') {
            inEntry = line == "[Desktop Entry]";
            sawEntry = sawEntry || inEntry;
            continue;
        }
        if (!inEntry) continue;
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const auto key = trim(line.substr(0, equals));
        const auto value = std::string(trim(line.substr(equals + 1)));
        if (key == "Name")
            entry.name = unescapeValue(value);
        else if (key == "Exec")
            exec = value;
        else if (key == "Type")
            type = value;
        else if (key == "StartupWMClass" && !value.empty())
            entry.startupWMClass = value;
        else if (key == "Hidden")
            hidden = value == "true";
    }
    if (!sawEntry || hidden || type != "Application" || entry.name.empty() || !exec) return std::nullopt;
    auto command = splitExec(*exec);
    if (!command || command->empty()) return std::nullopt;
    entry.command = std::move(*command);
    entry.executableName = firstOwnProgram(entry.command);
    return entry;
}

}  // namespace corvel
