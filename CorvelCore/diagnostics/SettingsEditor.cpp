#include "diagnostics/SettingsEditor.h"

#include "common/ByteFormat.h"
#include "common/Text.h"

#include <fmt/format.h>
#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <functional>

namespace corvel::SettingsEditor {

namespace {

constexpr std::string_view verifiedPrefix = "verifiedVolumes.";

[[noreturn]] void refuse(std::string_view key, std::string_view value, std::string_view accepts) {
    throw SettingsError(fmt::format("invalid value '{}' for {}: expected {}", value, key, accepts));
}

template <class Integer>
std::optional<Integer> parseInteger(std::string_view text) {
    text = trim(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    Integer result{};
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, result);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return result;
}

std::optional<double> parseDouble(std::string_view text) {
    text = trim(text);
    // from_chars for doubles is in g++ 12's library; no locale can turn "0.5" into 0 here.
    double result = 0;
    const auto* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, result);
    if (text.empty() || error != std::errc() || stop != end || !std::isfinite(result)) return std::nullopt;
    return result;
}

// What a setter needs to parse its value and to word a refusal.
struct Input {
    std::string_view key;
    std::string_view accepts;
    std::string_view value;
    const std::filesystem::path& home;

    [[noreturn]] void refuse() const { SettingsEditor::refuse(key, value, accepts); }
};

struct Setter {
    std::string_view key;
    std::string_view accepts;
    std::function<void(CorvelSettings&, const Input&)> set;
};

int minutes(const Input& in) {
    const auto parsed = parseInteger<int>(in.value);
    if (!parsed) in.refuse();
    return *parsed;
}

bool boolean(const Input& in) {
    const std::string text = toLower(trim(in.value));
    if (text == "true" || text == "yes" || text == "on" || text == "1") return true;
    if (text == "false" || text == "no" || text == "off" || text == "0") return false;
    in.refuse();
}

// "0.15" or "15%".
double fraction(const Input& in) {
    std::string_view text = trim(in.value);
    const bool percent = !text.empty() && text.back() == '%';
    if (percent) text.remove_suffix(1);
    const auto number = parseDouble(text);
    if (!number) in.refuse();
    return percent ? *number / 100.0 : *number;
}

// A whole number of bytes, optionally with a decimal unit: "30000000000", "30GB", "1.5 TB".
std::int64_t bytes(const Input& in) {
    const std::string_view text = trim(in.value);
    std::size_t split = 0;
    while (split < text.size() && (std::isdigit(static_cast<unsigned char>(text[split])) || text[split] == '.'))
        ++split;
    const auto number = parseDouble(text.substr(0, split));
    const std::string unit = toUpper(trim(text.substr(split)));
    static constexpr std::array<std::pair<std::string_view, double>, 8> units{
        {{"", 1}, {"B", 1}, {"BYTES", 1}, {"KB", 1e3}, {"MB", 1e6}, {"GB", 1e9}, {"TB", 1e12}, {"PB", 1e15}}};
    const auto found =
        std::find_if(units.begin(), units.end(), [&unit](const auto& entry) { return entry.first == unit; });
    if (!number || found == units.end()) in.refuse();
    const double amount = std::round(*number * found->second);
    if (amount >= 9.0e18) in.refuse();
    return static_cast<std::int64_t>(amount);
}

std::string expandHome(const std::string& path, const std::filesystem::path& home) {
    if (path == "~") return home.string();
    if (startsWith(path, "~/")) return (home / path.substr(2)).string();
    return path;
}

// A JSON array of texts, or texts separated by ":" as in PATH; empty text clears the list.
std::vector<std::string> pathList(const Input& in) {
    const std::string_view text = trim(in.value);
    std::vector<std::string> paths;
    if (!text.empty() && text.front() == '[') {
        try {
            paths = parseJsonText(text, std::string(in.key)).get<std::vector<std::string>>();
        } catch (const std::exception&) {
            in.refuse();
        }
    } else if (!text.empty()) {
        paths = split(text, ':');
    }
    std::vector<std::string> result;
    for (const auto& path : paths) {
        const std::string trimmed(trim(path));
        if (!trimmed.empty()) result.push_back(expandHome(trimmed, in.home));
    }
    return result;
}

std::string yesNo(bool value) {
    return value ? "true" : "false";
}

std::string listText(const std::vector<std::string>& items) {
    return items.empty() ? "(none)" : join(items, ":");
}

std::string bytesText(std::int64_t amount) {
    return fmt::format("{} ({})", amount, ByteFormat::string(amount));
}

const std::vector<Setter>& setters() {
    constexpr std::string_view minutesText = "whole minutes from 1 to 1440";
    constexpr std::string_view booleanText = "true or false";
    constexpr std::string_view pathsText = "absolute paths separated by ':' or a JSON array; empty clears";
    static const std::vector<Setter> table{
        {"monitoringEnabled", booleanText,
         [](CorvelSettings& s, const Input& in) { s.monitoringEnabled = boolean(in); }},
        {"intervalMinutes", minutesText, [](CorvelSettings& s, const Input& in) { s.intervalMinutes = minutes(in); }},
        {"notificationsEnabled", booleanText,
         [](CorvelSettings& s, const Input& in) { s.notificationsEnabled = boolean(in); }},
        {"thresholds.warningFreeFraction", "a fraction from 0 to 1 (0.15) or a percentage (15%)",
         [](CorvelSettings& s, const Input& in) { s.thresholds.warningFreeFraction = fraction(in); }},
        {"thresholds.criticalFreeFraction", "a fraction from 0 to 1 (0.05) or a percentage (5%)",
         [](CorvelSettings& s, const Input& in) { s.thresholds.criticalFreeFraction = fraction(in); }},
        {"thresholds.warningFreeBytes", "bytes, optionally with a decimal unit (30GB)",
         [](CorvelSettings& s, const Input& in) { s.thresholds.warningFreeBytes = bytes(in); }},
        {"thresholds.criticalFreeBytes", "bytes, optionally with a decimal unit (10GB)",
         [](CorvelSettings& s, const Input& in) { s.thresholds.criticalFreeBytes = bytes(in); }},
        {"thresholds.nvmeWearWarningPercent", "a whole percentage from 1 to 1000",
         [](CorvelSettings& s, const Input& in) {
             const auto percent = parseInteger<int>(in.value);
             if (!percent) in.refuse();
             s.thresholds.nvmeWearWarningPercent = *percent;
         }},
        {"thresholds.temperatureWarningCelsius", "degrees Celsius above 0 and at most 200",
         [](CorvelSettings& s, const Input& in) {
             const auto celsius = parseDouble(in.value);
             if (!celsius) in.refuse();
             s.thresholds.temperatureWarningCelsius = *celsius;
         }},
        {"customFootprintPaths", pathsText,
         [](CorvelSettings& s, const Input& in) { s.customFootprintPaths = pathList(in); }},
        {"projectRoots", pathsText, [](CorvelSettings& s, const Input& in) { s.projectRoots = pathList(in); }},
        {"workspace", "an absolute path; empty or 'none' clears",
         [](CorvelSettings& s, const Input& in) {
             const std::string text(trim(in.value));
             if (text.empty() || text == "none")
                 s.workspace.reset();
             else
                 s.workspace = expandHome(text, in.home);
         }},
        {"agentIntervalMinutes", minutesText,
         [](CorvelSettings& s, const Input& in) { s.agentIntervalMinutes = minutes(in); }},
        {"expectedVolumes", "a JSON array of {\"volumeID\", \"name\", \"reason\"} objects; [] clears",
         [](CorvelSettings& s, const Input& in) {
             try {
                 s.expectedVolumes =
                     parseJsonText(in.value, "expectedVolumes").get<std::vector<HealthAssessment::ExpectedVolume>>();
             } catch (const std::exception&) {
                 in.refuse();
             }
         }},
        {"updateRepository", "a GitHub repository as OWNER/NAME; empty or 'none' uses Velmora's own",
         [](CorvelSettings& s, const Input& in) {
             const std::string text(trim(in.value));
             if (text.empty() || text == "none")
                 s.updateRepository.reset();
             else
                 s.updateRepository = text;
         }},
        {"metricsTextfileDirectory", "an absolute path (the node exporter's textfile folder); empty or 'none' clears",
         [](CorvelSettings& s, const Input& in) {
             const std::string text(trim(in.value));
             if (text.empty() || text == "none")
                 s.metricsTextfileDirectory.reset();
             else
                 s.metricsTextfileDirectory = expandHome(text, in.home);
         }},
    };
    return table;
}

}  // namespace

const std::vector<KeyInfo>& keys() {
    static const std::vector<KeyInfo> list = [] {
        std::vector<KeyInfo> result;
        for (const auto& setter : setters()) result.push_back({std::string(setter.key), std::string(setter.accepts)});
        result.push_back({std::string(verifiedPrefix) + "<volume id>",
                          "an ISO 8601 date of the last verification; 'none' removes the entry"});
        return result;
    }();
    return list;
}

std::vector<std::pair<std::string, std::string>> entries(const CorvelSettings& s) {
    std::vector<std::pair<std::string, std::string>> rows{
        {"monitoringEnabled", yesNo(s.monitoringEnabled)},
        {"intervalMinutes", std::to_string(s.intervalMinutes)},
        {"notificationsEnabled", yesNo(s.notificationsEnabled)},
        {"thresholds.warningFreeFraction", fmt::format("{}", s.thresholds.warningFreeFraction)},
        {"thresholds.criticalFreeFraction", fmt::format("{}", s.thresholds.criticalFreeFraction)},
        {"thresholds.warningFreeBytes", bytesText(s.thresholds.warningFreeBytes)},
        {"thresholds.criticalFreeBytes", bytesText(s.thresholds.criticalFreeBytes)},
        {"thresholds.nvmeWearWarningPercent", std::to_string(s.thresholds.nvmeWearWarningPercent)},
        {"thresholds.temperatureWarningCelsius", fmt::format("{}", s.thresholds.temperatureWarningCelsius)},
        {"customFootprintPaths", listText(s.customFootprintPaths)},
        {"projectRoots", listText(s.projectRoots)},
        {"workspace", s.workspace ? *s.workspace : "(none)"},
        {"agentIntervalMinutes", std::to_string(s.agentIntervalMinutes)},
    };
    std::vector<std::string> expected;
    for (const auto& volume : s.expectedVolumes)
        expected.push_back(fmt::format("{} ({}, {})", volume.name, volume.volumeID, volume.reason));
    rows.emplace_back("expectedVolumes", expected.empty() ? "(none)" : join(expected, "; "));
    rows.emplace_back("updateRepository", s.updateRepository ? *s.updateRepository : "(default)");
    rows.emplace_back("metricsTextfileDirectory", s.metricsTextfileDirectory ? *s.metricsTextfileDirectory : "(none)");
    if (s.verifiedVolumes.empty()) rows.emplace_back("verifiedVolumes", "(none)");
    for (const auto& [volumeID, when] : s.verifiedVolumes)
        rows.emplace_back(std::string(verifiedPrefix) + volumeID, ISO8601::format(when));
    return rows;
}

CorvelSettings apply(const CorvelSettings& settings, std::string_view key, std::string_view value,
                     const std::filesystem::path& home) {
    // Settings are kept as JSON text; a path whose name is not UTF-8 cannot be written there.
    if (!isValidUTF8(value))
        throw SettingsError(
            fmt::format("invalid value '{}' for {}: not valid UTF-8 text (settings are stored as UTF-8)",
                        terminalSafe(value), key));
    CorvelSettings changed = settings;
    if (startsWith(key, verifiedPrefix) && key.size() > verifiedPrefix.size()) {
        const std::string volumeID(key.substr(verifiedPrefix.size()));
        const std::string text(trim(value));
        if (text == "none" || text.empty()) {
            changed.verifiedVolumes.erase(volumeID);
        } else {
            const auto when = ISO8601::parse(text);
            if (!when) refuse(key, value, "an ISO 8601 date such as 2026-11-02T09:30:00Z, or 'none'");
            changed.verifiedVolumes[volumeID] = *when;
        }
    } else {
        const auto found =
            std::find_if(setters().begin(), setters().end(), [key](const Setter& setter) { return setter.key == key; });
        if (found == setters().end()) {
            std::vector<std::string> names;
            for (const auto& info : keys()) names.push_back(info.key);
            throw SettingsError(fmt::format("unknown setting '{}' (known: {})", key, join(names, ", ")));
        }
        found->set(changed, Input{found->key, found->accepts, value, home});
    }
    if (auto problem = changed.validationProblem())
        throw SettingsError(fmt::format("cannot set {} to '{}': {}", key, value, *problem));
    return changed;
}

}  // namespace corvel::SettingsEditor
