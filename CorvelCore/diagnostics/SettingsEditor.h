// Reads and changes settings one key at a time, from text typed by a person: "intervalMinutes" 10,
// "thresholds.warningFreeBytes" 25GB, "projectRoots" ~/src:~/work. Every change is validated before
// it is accepted, and a refusal names the key and says what would be accepted.
//
//   auto changed = SettingsEditor::apply(settings, "thresholds.warningFreeFraction", "0.2", home);
#pragma once

#include "diagnostics/CorvelSettings.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvel {

// An unknown key or a value the key does not accept; the message says which and why.
class SettingsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace SettingsEditor {

struct KeyInfo {
    std::string key;
    std::string accepts;  // what VALUE may be, for help texts and error messages
};

// Every key `apply` understands, in display order. "verifiedVolumes.<volume id>" stands for one
// entry per volume.
const std::vector<KeyInfo>& keys();

// The settings as (key, text) rows, in display order, one row per verified volume.
std::vector<std::pair<std::string, std::string>> entries(const CorvelSettings& settings);

// A copy of `settings` with one key changed. "~" at the start of a path means `home`. Throws
// SettingsError for an unknown key, a value of the wrong form, or a result that fails validation.
CorvelSettings apply(const CorvelSettings& settings, std::string_view key, std::string_view value,
                     const std::filesystem::path& home);

}  // namespace SettingsEditor
}  // namespace corvel
