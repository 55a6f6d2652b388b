// The colours the application paints with, all taken from the brand palette (CorvelBrand/) under
// the theme the system's window colours show: one per tone of the core's enumerations (severity,
// health status, SMART status all carry a tone), one per space category, and the usage colours.
// Kept in one place so that a traffic light, a usage bar and a treemap agree with the report.
//
//   painter.setBrush(Palette::tone(toneOf(finding.severity)));
#pragma once

#include "BrandPalette.h"
#include "common/EnumTable.h"
#include "space/SpaceCategory.h"

#include <QColor>

namespace corvel::desktop::Palette {

// Dark when the application's window colour is dark.
Theme theme();
QColor colour(const Rgb& rgb);

QColor tone(Tone tone);
QColor category(SpaceCategory category);
QColor accent();
// Green while there is room, amber when getting full, red when nearly full (the command line's
// thresholds for its bars).
QColor usage(double usedFraction);
// The track behind a bar, readable on light and dark windows.
QColor track();

}  // namespace corvel::desktop::Palette
