// brand-icons: renders the logo into the application icon's PNG sizes, at build time.
//   brand-icons LOGO.svg OUTPUT_FOLDER 16 32 64 …   writes OUTPUT_FOLDER/velmora-<size>.png
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <iostream>

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const auto arguments = QCoreApplication::arguments();
    if (arguments.size() < 4) {
        std::cerr << "usage: brand-icons LOGO.svg OUTPUT_FOLDER SIZE...\n";
        return 2;
    }
    QSvgRenderer renderer(arguments[1]);
    if (!renderer.isValid()) {
        std::cerr << "brand-icons: cannot read " << arguments[1].toStdString() << '\n';
        return 1;
    }
    const QDir folder(arguments[2]);
    if (!folder.mkpath(QStringLiteral("."))) {
        std::cerr << "brand-icons: cannot create " << arguments[2].toStdString() << '\n';
        return 1;
    }
    for (qsizetype i = 3; i < arguments.size(); ++i) {
        bool valid = false;
        const int size = arguments[i].toInt(&valid);
        if (!valid || size <= 0 || size > 4096) {
            std::cerr << "brand-icons: not a size: " << arguments[i].toStdString() << '\n';
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        const auto path = folder.filePath(QStringLiteral("velmora-%1.png").arg(size));
        if (!image.save(path)) {
            std::cerr << "brand-icons: cannot write " << path.toStdString() << '\n';
            return 1;
        }
    }
    return 0;
}
