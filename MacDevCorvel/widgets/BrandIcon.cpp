#include "widgets/BrandIcon.h"

#include "BrandLogo.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace corvel::desktop::BrandIcon {
namespace {

QImage render(std::string_view svg, int size) {
    QSvgRenderer renderer(QByteArray(svg.data(), static_cast<qsizetype>(svg.size())));
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter);
    return image;
}

QIcon iconOf(std::string_view svg, std::initializer_list<int> sizes) {
    QIcon icon;
    for (const int size : sizes) icon.addPixmap(QPixmap::fromImage(render(svg, size)));
    return icon;
}

}  // namespace

QIcon application() {
    return iconOf(BrandLogo::svg(), {16, 32, 64, 128, 256});
}

QImage tintedImage(const QColor& colour, int size) {
    const Rgb rgb{static_cast<std::uint8_t>(colour.red()), static_cast<std::uint8_t>(colour.green()),
                  static_cast<std::uint8_t>(colour.blue())};
    return render(BrandLogo::tintedMono(rgb), size);
}

QIcon tinted(const QColor& colour) {
    QIcon icon;
    for (const int size : {16, 22, 32, 64}) icon.addPixmap(QPixmap::fromImage(tintedImage(colour, size)));
    return icon;
}

}  // namespace corvel::desktop::BrandIcon
