#include "report/ReportPalette.h"

#include "BrandPalette.h"

#include <fmt/format.h>

#include <array>

namespace corvel::ReportPalette {
namespace {

// The page is printed and read in daylight: the brand's light theme.
constexpr Theme pageTheme = Theme::light;

struct ToneName {
    Tone tone;
    std::string_view name;
};

constexpr std::array<ToneName, 6> toneNames{{
    {Tone::plain, "plain"},
    {Tone::good, "good"},
    {Tone::notice, "notice"},
    {Tone::caution, "caution"},
    {Tone::bad, "bad"},
    {Tone::muted, "muted"},
}};

}  // namespace

std::string categoryColour(SpaceCategory category) {
    return BrandPalette::category(category).hex();
}

std::string toneColour(Tone tone) {
    return BrandPalette::tone(tone, pageTheme).hex();
}

std::string_view toneName(Tone tone) {
    for (const auto& entry : toneNames) {
        if (entry.tone == tone) return entry.name;
    }
    return toneNames.front().name;
}

std::string cssVariables() {
    const auto& page = BrandPalette::surfaces(pageTheme);
    std::string css =
        fmt::format(":root{{--ink:{};--paper:{};--panel:{};--rule:{};--muted:{};--accent:{};", page.ink.hex(),
                    page.paper.hex(), page.panel.hex(), page.rule.hex(), page.muted.hex(), page.accent.hex());
    for (const auto& entry : toneNames)
        css += fmt::format("--tone-{}:{};", entry.name, BrandPalette::tone(entry.tone, pageTheme).hex());
    css += "}";
    return css;
}

}  // namespace corvel::ReportPalette
