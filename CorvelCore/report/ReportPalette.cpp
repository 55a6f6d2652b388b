#include "report/ReportPalette.h"

#include <fmt/format.h>

#include <array>
#include <utility>

namespace corvel::ReportPalette {
namespace {

struct BrandColour {
    std::string_view name;
    std::string_view value;
};

// The brand: deep ink on a warm paper white, with a teal accent.
constexpr std::array<BrandColour, 6> brand{{
    {"ink", "#1d2433"},
    {"paper", "#fbfaf7"},
    {"panel", "#ffffff"},
    {"rule", "#d9dce3"},
    {"muted", "#5b6475"},
    {"accent", "#0f7c8c"},
}};

// Indexed in the category order of SpaceCategory's table. Mid-tone colours, so the dark labels
// drawn on the tiles keep their contrast.
constexpr std::array<std::string_view, 20> categoryColours{{
    "#7fb3d5",  // projects
    "#a9cce3",  // personal data
    "#f5cba7",  // downloads
    "#d7bde2",  // application data
    "#76d7c4",  // docker
    "#85c1e9",  // xcode
    "#aed6f1",  // simulators
    "#a3e4d7",  // virtual environments
    "#f9e79f",  // node modules
    "#fad7a0",  // caches
    "#e5e8e8",  // logs
    "#f0b27a",  // build output
    "#f1948a",  // trash
    "#fdebd0",  // temporary
    "#bb8fce",  // databases
    "#ec7063",  // credentials
    "#abebc6",  // package managers
    "#d5dbdb",  // applications
    "#ccd1d1",  // system
    "#dfe3e8",  // other
}};

struct ToneColour {
    Tone tone;
    std::string_view name;
    std::string_view colour;
};

// Text colours with at least 4.5:1 contrast on the paper background.
constexpr std::array<ToneColour, 6> tones{{
    {Tone::plain, "plain", "#1d2433"},
    {Tone::good, "good", "#1e7b34"},
    {Tone::notice, "notice", "#1f5fa8"},
    {Tone::caution, "caution", "#8a5a00"},
    {Tone::bad, "bad", "#b3261e"},
    {Tone::muted, "muted", "#5b6475"},
}};

}  // namespace

std::string_view categoryColour(SpaceCategory category) {
    const auto& cases = allCases<SpaceCategory>();
    for (std::size_t i = 0; i < cases.size() && i < categoryColours.size(); ++i) {
        if (cases[i] == category) return categoryColours[i];
    }
    return categoryColours.back();
}

std::string_view toneColour(Tone tone) {
    for (const auto& entry : tones) {
        if (entry.tone == tone) return entry.colour;
    }
    return tones.front().colour;
}

std::string_view toneName(Tone tone) {
    for (const auto& entry : tones) {
        if (entry.tone == tone) return entry.name;
    }
    return tones.front().name;
}

std::string cssVariables() {
    std::string css = ":root{";
    for (const auto& colour : brand) css += fmt::format("--{}:{};", colour.name, colour.value);
    for (const auto& entry : tones) css += fmt::format("--tone-{}:{};", entry.name, entry.colour);
    css += "}";
    return css;
}

}  // namespace corvel::ReportPalette
