// The colours of the HTML report, kept in one place: the brand's colours (written into the page
// as CSS custom properties that report.css uses) and one colour per space category for the
// treemap and its legend. When the brand graphics gain a palette of their own, this is the one
// file that reads it.
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
std::string_view categoryColour(SpaceCategory category);

// A "#rrggbb" colour for a tone (good, caution, bad, …), readable as text on the page background.
std::string_view toneColour(Tone tone);

// The tone's name in the page's CSS classes ("good" for `tone-good`).
std::string_view toneName(Tone tone);

// The brand and tone colours as one CSS rule of custom properties.
std::string cssVariables();

}  // namespace corvel::ReportPalette
