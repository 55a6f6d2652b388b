#include "widgets/Palette.h"

#include <array>

namespace corvel::desktop::Palette {

QColor tone(Tone value) {
    switch (value) {
        case Tone::good:
            return QColor(0x34, 0xa8, 0x53);
        case Tone::notice:
            return QColor(0x3b, 0x82, 0xf6);
        case Tone::caution:
            return QColor(0xf5, 0x9e, 0x0b);
        case Tone::bad:
            return QColor(0xdc, 0x26, 0x26);
        case Tone::muted:
            return QColor(0x9c, 0xa3, 0xaf);
        case Tone::plain:
            break;
    }
    return QColor(0x6b, 0x72, 0x80);
}

QColor category(SpaceCategory value) {
    // In category order; neighbours differ in hue so that adjacent tiles stay apart.
    static constexpr std::array<QRgb, 20> colours{0x4e79a7, 0xf28e2b, 0x76b7b2, 0x59a14f, 0x0db7ed, 0x1575f9, 0x5e60ce,
                                                  0xb07aa1, 0x8cd17d, 0xe15759, 0xbab0ac, 0xff9da7, 0x9c755f, 0xd4a6c8,
                                                  0xedc948, 0xc0392b, 0x86bcb6, 0x499894, 0x79706e, 0xa0a4ab};
    const auto index = static_cast<std::size_t>(value);
    return QColor::fromRgb(index < colours.size() ? colours[index] : colours.back());
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
