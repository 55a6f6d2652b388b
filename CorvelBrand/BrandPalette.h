// The one palette of Velmora: the surfaces and the accent of each theme, a colour per tone (the
// severities, health and SMART states all map to a tone), and a colour per space category. Plain
// values with no toolkit types: the desktop application turns them into QColor, the HTML report
// into CSS, the command line into 24-bit escape codes.
//
//   const Rgb bad = BrandPalette::tone(toneOf(Severity::critical), Theme::dark);
//   std::string css = bad.hex();                                  // "#f87171"
//   const Rgb tile = BrandPalette::category(SpaceCategory::caches);
#pragma once

#include "common/EnumTable.h"
#include "space/SpaceCategory.h"

#include <cstdint>
#include <string>

namespace corvel {

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    // "#rrggbb", lower case.
    std::string hex() const;
    // Relative luminance (0 black … 1 white) as the web's contrast rules define it.
    double luminance() const;

    bool operator==(const Rgb&) const = default;
};

// How far apart two colours read as text on background: 1 (same) … 21 (black on white).
double contrastRatio(const Rgb& first, const Rgb& second);

enum class Theme { light, dark };

// What a window or page is painted with under one theme.
struct Surfaces {
    Rgb ink;     // body text
    Rgb paper;   // window or page background
    Rgb panel;   // cards and tables on the background
    Rgb rule;    // lines and tracks
    Rgb muted;   // secondary text
    Rgb accent;  // links, selection, the logo's ring

    bool operator==(const Surfaces&) const = default;
};

namespace BrandPalette {

const Surfaces& surfaces(Theme theme);
Rgb accent(Theme theme);
// Readable as text on the theme's paper and panel; also used as the fill of lights and bars.
Rgb tone(Tone tone, Theme theme);
// A mid-tone per category, the same under both themes (a treemap tile with a dark label).
Rgb category(SpaceCategory category);

}  // namespace BrandPalette
}  // namespace corvel
