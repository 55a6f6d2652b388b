// The application paints with the brand: the same colour per severity as the report, under the
// theme the window colours show; the menu-bar mark in the worst severity's colour.
#include "BrandPalette.h"
#include "DesktopTests.h"
#include "diagnostics/Severity.h"
#include "report/ReportPalette.h"
#include "widgets/BrandIcon.h"
#include "widgets/Palette.h"
#include "widgets/ToolParts.h"

#include <QGuiApplication>
#include <QHash>
#include <QPalette>

namespace corvel::desktop::testing {
namespace {

// The colour most of the mark's solid pixels have (edges are blended, the inside is not).
QColor dominantSolidColour(const QImage& image) {
    QHash<QRgb, int> counts;
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < pixels.height(); ++y)
        for (int x = 0; x < pixels.width(); ++x)
            if (qAlpha(pixels.pixel(x, y)) == 255) ++counts[pixels.pixel(x, y) & 0xffffff];
    QRgb best = 0;
    int most = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        if (it.value() > most) std::tie(best, most) = std::pair(it.key(), it.value());
    return most == 0 ? QColor() : QColor::fromRgb(best);
}

QColor qt(const Rgb& rgb) {
    return QColor(rgb.red, rgb.green, rgb.blue);
}

// Sets the application's window colour for the life of the object.
class WindowColour {
public:
    explicit WindowColour(const QColor& colour) : saved_(QGuiApplication::palette()) {
        QPalette palette = saved_;
        palette.setColor(QPalette::Window, colour);
        QGuiApplication::setPalette(palette);
    }
    ~WindowColour() { QGuiApplication::setPalette(saved_); }

private:
    QPalette saved_;
};

}  // namespace

class BrandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void severitiesPaintAsTheReportDoesInTheSystemsTheme() {
        {
            const WindowColour light(QColor(0xf6, 0xf5, 0xf4));
            QCOMPARE(Palette::theme(), Theme::light);
            for (const auto severity : allCases<Severity>()) {
                const auto tone = toneOf(severity);
                // The report's page and the light window show one and the same colour.
                QCOMPARE(Palette::tone(tone).name(), QString::fromStdString(ReportPalette::toneColour(tone)));
            }
        }
        const WindowColour dark(QColor(0x20, 0x22, 0x26));
        QCOMPARE(Palette::theme(), Theme::dark);
        for (const auto severity : allCases<Severity>()) {
            const auto tone = toneOf(severity);
            QCOMPARE(Palette::tone(tone), qt(BrandPalette::tone(tone, Theme::dark)));
            QVERIFY(Palette::tone(tone).name() != QString::fromStdString(ReportPalette::toneColour(tone)));
        }
        QCOMPARE(Palette::accent(), qt(BrandPalette::accent(Theme::dark)));
    }

    void trayMarkTakesTheWorstSeveritysColour() {
        QSet<QRgb> seen;
        for (const auto severity : allCases<Severity>()) {
            const QColor expected = Palette::tone(toneOf(severity));
            for (const int size : {16, 32}) {
                const QImage image = BrandIcon::tintedImage(expected, size);
                QCOMPARE(image.size(), QSize(size, size));
                QCOMPARE(dominantSolidColour(image), expected);
            }
            const QImage fromIcon = BrandIcon::tinted(expected).pixmap(32).toImage();
            QCOMPARE(dominantSolidColour(fromIcon), expected);
            seen.insert(expected.rgb());
        }
        QCOMPARE(seen.size(), static_cast<qsizetype>(allCases<Severity>().size()));
        // The window icon is the full-colour mark: the ink tile and the accent ring.
        const QImage application = BrandIcon::application().pixmap(64).toImage();
        QVERIFY(!application.isNull());
        QCOMPARE(dominantSolidColour(application), qt(BrandPalette::surfaces(Theme::light).ink));
    }

    void unmeasuredMemoryShowsADash() {
        QCOMPARE(ToolParts::memory(0), QStringLiteral("—"));
        QCOMPARE(ToolParts::memory(-1), QStringLiteral("—"));
        QCOMPARE(ToolParts::memory(3 * 1024 * 1024), ToolParts::bytes(3 * 1024 * 1024));
    }
};

std::unique_ptr<QObject> makeBrandTest() {
    return std::make_unique<BrandTest>();
}

}  // namespace corvel::desktop::testing

#include "BrandTest.moc"
