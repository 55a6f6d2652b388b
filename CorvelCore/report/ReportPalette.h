// The colours of the HTML report: the brand palette's light theme (written into the page as CSS
// custom properties that report.css uses) and its colour per space category for the treemap and
// its legend. This is the one report file that reads the brand palette.
//
//   std::string css = ReportPalette::cssVariables();       // ":root{--ink:#1d2433;...}"
//   std::string fill = ReportPalette::categoryColour(node.classification.category);
#pragma once

#include "common/EnumTable.h"
#include "space/SpaceCategory.h"

#include <string>
#include <string_view>

namespace corvel::ReportPalette {

// A "#rrggbb" colour for each category; neighbours in the category order differ clearly.
std::string categoryColour(SpaceCategory category);

// A "#rrggbb" colour for a tone (good, caution, bad, …), readable as text on the page background.
std::string toneColour(Tone tone);

// The tone's name in the page's CSS classes ("good" for `tone-good`).
std::string_view toneName(Tone tone);

// The brand and tone colours as one CSS rule of custom properties.
std::string cssVariables();

}  // namespace corvel::ReportPalette
