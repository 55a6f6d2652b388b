// An application as a Linux desktop describes it: a ".desktop" file's [Desktop Entry] group with
// the program it starts. Used to show running programs under their application's name and to
// start an application again the way the desktop would.
//
//   auto entry = DesktopEntry::parse(text, "/usr/share/applications/org.gnome.Calculator.desktop");
//   entry->name == "Calculator";  entry->command == {"gnome-calculator"}
//   entry->executableName == "gnome-calculator"
#pragma once

#include "common/Json.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct DesktopEntry {
    std::string id;    // the file name without ".desktop"
    std::string name;  // the untranslated Name
    std::string path;  // the .desktop file
    // Exec split into words, quoting undone and field codes (%u, %F, ...) left out.
    std::vector<std::string> command;
    // The program name running processes show, when the command names one of its own rather than
    // an interpreter or launcher (sh, python3, flatpak, ...) that many applications share.
    std::optional<std::string> executableName;
    std::optional<std::string> startupWMClass;

    bool operator==(const DesktopEntry&) const = default;

    // Absent unless the text holds a [Desktop Entry] group of Type Application with a Name and
    // an Exec, and is not marked Hidden (which is how a person deletes a system-wide entry).
    static std::optional<DesktopEntry> parse(std::string_view text, const std::string& path);
    // The words of an Exec value, or absent when its quoting is broken.
    static std::optional<std::vector<std::string>> splitExec(std::string_view exec);
};

CORVEL_JSON_RECORD(DesktopEntry, id, name, path, command, executableName, startupWMClass)

}  // namespace corvel
