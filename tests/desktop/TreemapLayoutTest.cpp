#include "DesktopTests.h"
#include "widgets/TreemapLayout.h"
#include "widgets/TreemapWidget.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

Q_DECLARE_METATYPE(corvel::desktop::TreemapRect)

namespace corvel::desktop::testing {
namespace {

double overlap(const TreemapRect& a, const TreemapRect& b) {
    const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    return width > 0 && height > 0 ? width * height : 0;
}

double aspect(const TreemapRect& rect) {
    return std::max(rect.width, rect.height) / std::min(rect.width, rect.height);
}

}  // namespace

class TreemapLayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tilesAreProportionalInsideAndApart_data() {
        QTest::addColumn<std::vector<double>>("weights");
        QTest::addColumn<TreemapRect>("bounds");
        QTest::newRow("one") << std::vector<double>{42} << TreemapRect{0, 0, 300, 200};
        QTest::newRow("descending") << std::vector<double>{6, 6, 4, 3, 2, 2, 1} << TreemapRect{0, 0, 600, 400};
        QTest::newRow("unsorted, offset, tall")
            << std::vector<double>{1, 50, 3, 700, 20, 20, 5} << TreemapRect{30, 40, 120, 900};
        QTest::newRow("byte counts") << std::vector<double>{4.2e10, 1.3e9, 7.7e8, 5e6, 4096, 4096, 1}
                                     << TreemapRect{0, 0, 1024, 768};
        std::vector<double> many(300);
        std::iota(many.begin(), many.end(), 1.0);
        QTest::newRow("three hundred") << many << TreemapRect{0, 0, 800, 600};
    }

    void tilesAreProportionalInsideAndApart() {
        QFETCH(std::vector<double>, weights);
        QFETCH(TreemapRect, bounds);
        const auto tiles = TreemapLayout::squarify(weights, bounds);
        QCOMPARE(tiles.size(), weights.size());
        const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
        double covered = 0;
        for (std::size_t i = 0; i < tiles.size(); ++i) {
            const auto& tile = tiles[i];
            const double expected = bounds.area() * weights[i] / total;
            QVERIFY2(std::abs(tile.area() - expected) <= 1e-6 * bounds.area(), qPrintable(QString::number(i)));
            QVERIFY(tile.x >= bounds.x - 1e-9 && tile.y >= bounds.y - 1e-9);
            QVERIFY(tile.x + tile.width <= bounds.x + bounds.width + 1e-6);
            QVERIFY(tile.y + tile.height <= bounds.y + bounds.height + 1e-6);
            covered += tile.area();
            for (std::size_t j = i + 1; j < tiles.size(); ++j)
                QVERIFY2(overlap(tile, tiles[j]) <= 1e-6, qPrintable(QStringLiteral("%1 and %2").arg(i).arg(j)));
        }
        QVERIFY(std::abs(covered - bounds.area()) <= 1e-6 * bounds.area());
    }

    // What makes a treemap squarified rather than sliced: equal sizes come out as near squares.
    void equalWeightsMakeNearSquares() {
        const auto four = TreemapLayout::squarify({1, 1, 1, 1}, {0, 0, 400, 400});
        for (const auto& tile : four) QCOMPARE(tile, (TreemapRect{tile.x, tile.y, 200, 200}));
        const auto many = TreemapLayout::squarify(std::vector<double>(36, 5), {0, 0, 600, 400});
        for (const auto& tile : many) QVERIFY2(aspect(tile) < 2.0, qPrintable(QString::number(aspect(tile))));
    }

    void nothingToShowGetsEmptyTiles() {
        const TreemapRect bounds{10, 20, 300, 200};
        const auto tiles = TreemapLayout::squarify({0, -5, std::nan(""), 7}, bounds);
        QCOMPARE(tiles.size(), std::size_t(4));
        for (int i = 0; i < 3; ++i) QCOMPARE(tiles[i], (TreemapRect{10, 20, 0, 0}));
        QVERIFY(std::abs(tiles[3].x - bounds.x) < 1e-9 && std::abs(tiles[3].y - bounds.y) < 1e-9);
        QVERIFY(std::abs(tiles[3].width - bounds.width) < 1e-9 && std::abs(tiles[3].height - bounds.height) < 1e-9);
        for (const auto& tile : TreemapLayout::squarify({3, 4}, {0, 0, 0, 100})) QCOMPARE(tile.area(), 0.0);
        QVERIFY(TreemapLayout::squarify({}, bounds).empty());
    }

    // A folder of more items than the widget has room for: the largest get tiles in the folder's
    // order, the rest one shared tile, and together they still fill the widget.
    void aHugeFolderShowsItsLargestAndSharesTheRest() {
        SpaceNode folder;
        for (int i = 0; i < 1000; ++i) {
            SpaceNode file;
            file.name = "f" + std::to_string(i);
            file.allocatedBytes = i == 500 ? 1'000'000 : 1000 + (i * 37) % 900;
            folder.children.push_back(file);
            folder.allocatedBytes += file.allocatedBytes;
        }
        TreemapWidget map;
        map.resize(200, 150);  // room for one tile per 8 x 8 pixels: 468
        map.setNode(&folder);
        const auto& tiles = map.tiles();
        QCOMPARE(tiles.size(), std::size_t(469));
        double covered = 0;
        for (const auto& tile : tiles) covered += tile.area();
        QVERIFY(std::abs(covered - 200.0 * 150.0) < 1e-6 * 200 * 150);
        // The one large file holds about half of the bytes and so about half of the area.
        const double largest = std::max_element(tiles.begin(), tiles.end() - 1, [](const auto& a, const auto& b) {
                                   return a.area() < b.area();
                               })->area();
        QVERIFY2(largest > 0.4 * covered && largest < 0.6 * covered, qPrintable(QString::number(largest / covered)));
        QVERIFY(tiles.back().area() > 0);  // the 532 smallest together
    }
};

std::unique_ptr<QObject> makeTreemapLayoutTest() {
    return std::make_unique<TreemapLayoutTest>();
}

}  // namespace corvel::desktop::testing

#include "TreemapLayoutTest.moc"
