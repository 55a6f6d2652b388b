// The logo as SVG text: the full-colour mark (a storage stack inside a segmented ring on an ink
// tile) and a one-colour variant for places that tint it themselves, such as the menu-bar item.
// Both are compiled in from CorvelBrand/logo.svg and logo-mono.svg, so nothing is read at run
// time and the HTML report can show the logo inline.
//
//   page += BrandLogo::svg();
//   renderer.load(QByteArray::fromStdString(BrandLogo::tintedMono(BrandPalette::tone(Tone::bad, theme))));
#pragma once

#include "BrandPalette.h"

#include <string>
#include <string_view>

namespace corvel::BrandLogo {

std::string_view svg();
// Every shape drawn in black on a transparent ground.
std::string_view monoSvg();
// The one-colour mark with every shape in `colour`.
std::string tintedMono(const Rgb& colour);

}  // namespace corvel::BrandLogo
