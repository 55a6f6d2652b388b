#include "agent/AgentLaunchFiles.h"

#include <fmt/format.h>

namespace corvel {

std::vector<std::string> AgentLaunch::arguments(bool once) const {
    std::vector<std::string> words{program, "--data-dir", dataFolder, "agent", "run"};
    if (once) words.emplace_back("--once");
    return words;
}

namespace AgentLaunchFiles {
namespace {

std::string hexEscape(char c) {
    return fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

}  // namespace

std::string launchAgentLabel() {
    return std::string(appID) + ".agent";
}

std::string launchAgentFileName() {
    return launchAgentLabel() + ".plist";
}

std::string xmlEscaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '&')
            escaped += "&amp;";
        else if (c == '<')
            escaped += "&lt;";
        else if (c == '>')
            escaped += "&gt;";
        else
            escaped += c;
    }
    return escaped;
}

std::string systemdQuoted(std::string_view argument) {
    std::string quoted = "\"";
    for (const char c : argument) {
        if (c == '\\' || c == '"')
            (quoted += '\\') += c;
        else if (c == '%')
            quoted += "%%";
        else if (c == '$')
            quoted += "$$";
        else if (isControl(c))
            quoted += hexEscape(c);
        else
            quoted += c;
    }
    return quoted + "\"";
}

std::string desktopExecQuoted(std::string_view argument) {
    // Inside the quotes, '"', '`', '$' and '\' take a backslash; then the value as a whole is a
    // desktop-entry string, in which every backslash is doubled once more.
    std::string quoted = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$')
            (quoted += "\\\\") += c;
        else if (c == '\\')
            quoted += "\\\\\\\\";
        else if (c == '%')
            quoted += "%%";
        else if (isControl(c))
            quoted += ' ';  // an Exec line cannot carry a line break
        else
            quoted += c;
    }
    return quoted + "\"";
}

std::string launchAgentPlist(const AgentLaunch& launch) {
    std::string arguments;
    for (const auto& word : launch.arguments(false)) arguments += "\t\t<string>" + xmlEscaped(word) + "</string>\n";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n"
           "<dict>\n"
           "\t<key>Label</key>\n"
           "\t<string>" +
           xmlEscaped(launchAgentLabel()) +
           "</string>\n"
           "\t<key>ProgramArguments</key>\n"
           "\t<array>\n" +
           arguments +
           "\t</array>\n"
           "\t<key>RunAtLoad</key>\n"
           "\t<true/>\n"
           "\t<key>KeepAlive</key>\n"
           "\t<dict>\n"
           "\t\t<key>SuccessfulExit</key>\n"
           "\t\t<false/>\n"
           "\t</dict>\n"
           "\t<key>ProcessType</key>\n"
           "\t<string>Background</string>\n"
           "\t<key>LowPriorityIO</key>\n"
           "\t<true/>\n"
           "</dict>\n"
           "</plist>\n";
}

std::string systemdService(const AgentLaunch& launch) {
    std::string exec;
    for (const auto& word : launch.arguments(true)) exec += (exec.empty() ? "" : " ") + systemdQuoted(word);
    return "[Unit]\n"
           "Description=Velmora storage agent: one check of the disks and volumes\n"
           "\n"
           "[Service]\n"
           "Type=oneshot\n"
           "ExecStart=" +
           exec +
           "\n"
           "Nice=10\n"
           "IOSchedulingClass=idle\n";
}

std::string systemdTimer(const AgentLaunch& launch) {
    return fmt::format(
        "[Unit]\n"
        "Description=Velmora storage agent, every {0} minutes\n"
        "\n"
        "[Timer]\n"
        "OnStartupSec=1min\n"
        "OnUnitInactiveSec={0}min\n"
        "AccuracySec=1min\n"
        "Unit={1}\n"
        "\n"
        "[Install]\n"
        "WantedBy=timers.target\n",
        launch.intervalMinutes, serviceName);
}

std::string autostartEntry(const AgentLaunch& launch) {
    std::string exec;
    for (const auto& word : launch.arguments(false)) exec += (exec.empty() ? "" : " ") + desktopExecQuoted(word);
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Velmora storage agent\n"
           "Comment=Checks free space and disk health in the background\n"
           "Exec=" +
           exec +
           "\n"
           "Terminal=false\n"
           "NoDisplay=true\n"
           "X-GNOME-Autostart-enabled=true\n";
}

}  // namespace AgentLaunchFiles
}  // namespace corvel
