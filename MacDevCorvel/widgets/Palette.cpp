#include "widgets/Palette.h"

#include <QGuiApplication>
#include <QPalette>

namespace corvel::desktop::Palette {

Theme theme() {
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128 ? Theme::dark : Theme::light;
}

QColor colour(const Rgb& rgb) {
    return QColor(rgb.red, rgb.green, rgb.blue);
}

QColor tone(Tone value) {
    return colour(BrandPalette::tone(value, theme()));
}

QColor category(SpaceCategory value) {
    return colour(BrandPalette::category(value));
}

QColor accent() {
    return colour(BrandPalette::accent(theme()));
}

QColor usage(double usedFraction) {
    if (usedFraction >= 0.9) return tone(Tone::bad);
    if (usedFraction >= 0.8) return tone(Tone::caution);
    return tone(Tone::good);
}

QColor track() {
    return QColor(0x80, 0x80, 0x80, 0x40);
}

}  // namespace corvel::desktop::Palette
