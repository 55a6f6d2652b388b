// The application's icons drawn from the brand's logo: the window icon (the full-colour mark)
// and the menu-bar item (the one-colour mark in a tone's colour, so the worst severity shows).
//
//   window.setWindowIcon(BrandIcon::application());
//   tray.setIcon(BrandIcon::tinted(Palette::tone(toneOf(worst))));
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>

namespace corvel::desktop::BrandIcon {

QIcon application();
QIcon tinted(const QColor& colour);
// One size of the tinted mark, for those that need its pixels.
QImage tintedImage(const QColor& colour, int size);

}  // namespace corvel::desktop::BrandIcon
