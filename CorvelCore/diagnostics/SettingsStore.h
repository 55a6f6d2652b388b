// Keeps the user's settings as "settings.json" in the data folder. A missing file means the
// defaults, and so does every key a file leaves out. A file we cannot read or decode also reads as
// the defaults, but it is left exactly as it is (the user may want to repair it) until the next
// change, which first keeps it aside as "settings.json.unreadable"; the problem is reported once
// per store rather than on every load.
//
//   SettingsStore store(dataDir, home);
//   auto loaded = store.load();               // loaded.settings, loaded.warning
//   loaded.settings.intervalMinutes = 10;
//   store.save(loaded.settings);              // atomic replacement
#pragma once

#include "diagnostics/CorvelSettings.h"

#include <filesystem>
#include <optional>
#include <string>

namespace corvel {

class SettingsStore {
public:
    static constexpr const char* fileName = "settings.json";

    struct Loaded {
        CorvelSettings settings;
        bool fromFile = false;               // false: the defaults (no file, or an unreadable one)
        std::optional<std::string> warning;  // set the first time this store meets a bad file
    };

    SettingsStore(std::filesystem::path dataDirectory, std::filesystem::path home);

    const std::filesystem::path& path() const { return path_; }
    CorvelSettings defaults() const { return CorvelSettings::defaults(home_); }

    Loaded load();
    // Throws FileError when the file cannot be written; the old file is then untouched. An
    // unreadable file met by `load` is renamed to "settings.json.unreadable" first.
    void save(const CorvelSettings& settings);

private:
    std::filesystem::path path_;
    std::filesystem::path home_;
    std::optional<std::string> reportedProblem_;
    bool unreadable_ = false;  // the file exists but could not be used
};

}  // namespace corvel
