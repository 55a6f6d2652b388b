// The two pure functions behind the command palette and the history chart: which entries a
// typed text finds, in which order; where a history's samples and forecast fall in a plot.
#include "DesktopTests.h"
#include "shell/CommandPalette.h"
#include "widgets/HistoryChart.h"

namespace corvel::desktop::testing {
namespace {

std::vector<PaletteEntry> entries() {
    return {{"Screen", "Dashboard", {}},
            {"Screen", "Developer storage", {}},
            {"Screen", "Space", {}},
            {"Disk", "Elements (disk4)", {}},
            {"Volume", "Macintosh HD (/)", {}},
            {"Action", "Refresh", {}},
            {"Volume", "Media (/Volumes/media)", {}}};
}

VolumeSample sample(int hour, std::int64_t available) {
    return {"v", "Data", *ISO8601::parse("2026-11-01T00:00:00Z") + std::chrono::hours(hour), 1000, available};
}

}  // namespace

class PaletteAndChartTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void searchFindsAndRanks_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("titles");
        QTest::newRow("empty keeps all in order")
            << "" << QStringList{"Dashboard", "Developer storage",     "Space", "Elements (disk4)", "Macintosh HD (/)",
                                 "Refresh",   "Media (/Volumes/media)"};
        QTest::newRow("title before kind")
            << "re" << QStringList{"Refresh", "Dashboard", "Developer storage", "Space"};  // "Screen" holds "re"
        QTest::newRow("case ignored") << "MEDIA" << QStringList{"Media (/Volumes/media)"};
        QTest::newRow("every word must match, kind included") << "volume mac" << QStringList{"Macintosh HD (/)"};
        QTest::newRow("device id") << "disk4" << QStringList{"Elements (disk4)"};
        QTest::newRow("kind alone") << "disk" << QStringList{"Elements (disk4)"};
        QTest::newRow("inner match ranked after prefix")
            << "d"
            << QStringList{"Dashboard", "Developer storage", "Elements (disk4)", "Macintosh HD (/)",
                           "Media (/Volumes/media)"};
        QTest::newRow("nothing") << "zzz" << QStringList{};
    }

    void searchFindsAndRanks() {
        QFETCH(QString, query);
        QFETCH(QStringList, titles);
        const auto all = entries();
        QStringList found;
        for (const auto index : PaletteSearch::matches(all, query)) found << all[index].title;
        QCOMPARE(found, titles);
    }

    void chartPlacesSamplesAndForecast() {
        VolumeHistory history{"v", "Data", {sample(0, 1000), sample(24, 500), sample(48, 250)}, -375.0, 1.0};
        const QRectF area(10, 20, 300, 100);
        const auto geometry = HistoryChart::Geometry::of(history, area);
        QCOMPARE(geometry.samples.size(), std::size_t(3));
        // Two days of samples and one more until full: the axis covers three days.
        QCOMPARE(geometry.spanSeconds, 3 * 86400.0);
        QCOMPARE(geometry.topBytes, 1000.0);
        QCOMPARE(geometry.samples[0], QPointF(10, 20));   // full size at the top left
        QCOMPARE(geometry.samples[1], QPointF(110, 70));  // half free, a third along
        QCOMPARE(geometry.samples[2], QPointF(210, 95));
        QVERIFY(geometry.forecast);
        QCOMPARE(geometry.forecast->p1(), geometry.samples[2]);
        QCOMPARE(geometry.forecast->p2(), QPointF(310, 120));  // empty at the right edge

        history.daysUntilFull.reset();
        const auto flat = HistoryChart::Geometry::of(history, area);
        QVERIFY(!flat.forecast);
        QCOMPARE(flat.samples[2].x(), 310.0);  // the samples alone fill the axis

        const VolumeHistory single{"v", "Data", {sample(0, 400)}, std::nullopt, std::nullopt};
        const auto one = HistoryChart::Geometry::of(single, area);
        QCOMPARE(one.samples.front(), QPointF(160, 80));  // in the middle of the time axis
        QVERIFY(HistoryChart::Geometry::of({}, area).samples.empty());
    }
};

std::unique_ptr<QObject> makePaletteAndChartTest() {
    return std::make_unique<PaletteAndChartTest>();
}

}  // namespace corvel::desktop::testing

#include "PaletteAndChartTest.moc"
