#include "BrandPalette.h"

#include <fmt/format.h>
#include <algorithm>
#include <array>
#include <cmath>

namespace corvel {
namespace {

constexpr Rgb rgb(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value)};
}

// Deep ink on a warm paper white, with a teal accent; at night the same ink becomes the paper.
const Surfaces lightSurfaces{rgb(0x1d2433), rgb(0xfbfaf7), rgb(0xffffff), rgb(0xd9dce3), rgb(0x5b6475), rgb(0x0f7c8c)};
const Surfaces darkSurfaces{rgb(0xe6e9ef), rgb(0x141922), rgb(0x1c2230), rgb(0x2e3647), rgb(0x9ca3af), rgb(0x2bb3c4)};

struct ToneColours {
    Tone tone;
    Rgb light;
    Rgb dark;
};

// In the order of Tone; each keeps 4.5:1 against its theme's paper and panel.
constexpr std::array<ToneColours, 6> tones{{
    {Tone::plain, rgb(0x1d2433), rgb(0xe6e9ef)},
    {Tone::good, rgb(0x1e7b34), rgb(0x4ade80)},
    {Tone::notice, rgb(0x1f5fa8), rgb(0x60a5fa)},
    {Tone::caution, rgb(0x8a5a00), rgb(0xfbbf24)},
    {Tone::bad, rgb(0xb3261e), rgb(0xf87171)},
    {Tone::muted, rgb(0x5b6475), rgb(0x9ca3af)},
}};

// In the category order of SpaceCategory's table; neighbours differ in hue so adjacent tiles
// stay apart, and all are light enough for a dark label.
constexpr std::array<Rgb, 20> categories{{
    rgb(0x7fa7d1),  // projects
    rgb(0xa0cbe8),  // personal data
    rgb(0xf5a35c),  // downloads
    rgb(0xd4a6c8),  // application data
    rgb(0x5cc8e8),  // docker
    rgb(0x8fb3f2),  // xcode
    rgb(0xb5b8ec),  // simulators
    rgb(0x8cd17d),  // virtual environments
    rgb(0xf1ce63),  // node modules
    rgb(0xff9d9a),  // caches
    rgb(0xc9c3bd),  // logs
    rgb(0xffbe7d),  // build output
    rgb(0xe88a8f),  // trash
    rgb(0xf6e2b3),  // temporary
    rgb(0xc49ce0),  // databases
    rgb(0xf07167),  // credentials
    rgb(0x86bcb6),  // package managers
    rgb(0xb8d8a6),  // applications
    rgb(0xa9aeb8),  // system
    rgb(0xdde1e7),  // other
}};

double channel(std::uint8_t value) {
    const double c = value / 255.0;
    return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

}  // namespace

std::string Rgb::hex() const {
    return fmt::format("#{:02x}{:02x}{:02x}", red, green, blue);
}

double Rgb::luminance() const {
    return 0.2126 * channel(red) + 0.7152 * channel(green) + 0.0722 * channel(blue);
}

double contrastRatio(const Rgb& first, const Rgb& second) {
    // std::minmax of two temporaries would hand back references to them; compare values instead.
    const double a = first.luminance();
    const double b = second.luminance();
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

namespace BrandPalette {

const Surfaces& surfaces(Theme theme) {
    return theme == Theme::dark ? darkSurfaces : lightSurfaces;
}

Rgb accent(Theme theme) {
    return surfaces(theme).accent;
}

Rgb tone(Tone value, Theme theme) {
    const auto found =
        std::find_if(tones.begin(), tones.end(), [value](const auto& entry) { return entry.tone == value; });
    const auto& entry = found == tones.end() ? tones.front() : *found;
    return theme == Theme::dark ? entry.dark : entry.light;
}

Rgb category(SpaceCategory value) {
    const auto& cases = allCases<SpaceCategory>();
    const auto index = static_cast<std::size_t>(std::find(cases.begin(), cases.end(), value) - cases.begin());
    return index < categories.size() ? categories[index] : categories.back();
}

}  // namespace BrandPalette
}  // namespace corvel
