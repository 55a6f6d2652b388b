#include "report/ReportTree.h"
#include "report/Treemap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;

TEST(Treemap, EachPositiveSizeGetsOneTileOfProportionalAreaInsideTheBoxWithoutOverlap) {
    const std::vector<std::vector<std::int64_t>> cases{
        {500, 300, 200}, {1}, {7, 7, 7, 7, 7, 7, 7}, {1000000, 1, 1, 1}, {3, 0, -4, 9, 1, 1, 2, 40, 6}};
    const TreemapRect box{10, 20, 960, 540, 0};
    for (const auto& sizes : cases) {
        const auto tiles = Treemap::layout(sizes, box);
        double total = 0;
        std::size_t positive = 0;
        for (auto size : sizes) {
            if (size > 0) {
                total += static_cast<double>(size);
                ++positive;
            }
        }
        ASSERT_EQ(tiles.size(), positive);
        double covered = 0;
        for (std::size_t i = 0; i < tiles.size(); ++i) {
            const auto& tile = tiles[i];
            const double expected = static_cast<double>(sizes[tile.index]) / total * box.area();
            EXPECT_NEAR(tile.area(), expected, box.area() * 1e-9 + 1e-6) << "tile for size " << sizes[tile.index];
            EXPECT_GE(tile.x, box.x - 1e-6);
            EXPECT_GE(tile.y, box.y - 1e-6);
            EXPECT_LE(tile.x + tile.width, box.x + box.width + 1e-6);
            EXPECT_LE(tile.y + tile.height, box.y + box.height + 1e-6);
            for (std::size_t j = i + 1; j < tiles.size(); ++j) {
                const auto& other = tiles[j];
                const double overlapX =
                    std::min(tile.x + tile.width, other.x + other.width) - std::max(tile.x, other.x);
                const double overlapY =
                    std::min(tile.y + tile.height, other.y + other.height) - std::max(tile.y, other.y);
                EXPECT_FALSE(overlapX > 1e-6 && overlapY > 1e-6) << "tiles " << i << " and " << j << " overlap";
            }
            covered += tile.area();
        }
        EXPECT_NEAR(covered, box.area(), 1e-3);
    }
}

TEST(Treemap, EqualSizesInASquareBoxStayCloseToSquares) {
    const auto tiles = Treemap::layout({1, 1, 1, 1}, {0, 0, 100, 100, 0});
    for (const auto& tile : tiles) EXPECT_NEAR(tile.width / tile.height, 1.0, 1e-9);
}

SpaceNode node(std::string name, std::int64_t bytes, std::vector<SpaceNode> children = {}) {
    SpaceNode result;
    result.path = "/r/" + name;
    result.name = std::move(name);
    result.isDirectory = !children.empty();
    result.allocatedBytes = bytes;
    result.fileCount = children.empty() ? 1 : 0;
    result.children = std::move(children);
    return result;
}

TEST(ReportTree, KeepsTheLargestNodesAcrossTheTreeAndFoldsTheRestPerFolder) {
    const SpaceNode tree = node("root", 1000,
                                {node("big", 700, {node("a", 400), node("b", 250), node("c", 50)}), node("mid", 200),
                                 node("small", 60), node("tiny", 40)});
    const SpaceNode shown = ReportTree::limit(tree, 4);  // root, big, a, b
    ASSERT_EQ(ReportTree::nodeCount(shown), 4u + 2u);    // plus one fold in root and one in big
    EXPECT_THAT(shown.children,
                ElementsAre(Field(&SpaceNode::name, "big"), Field(&SpaceNode::name, "3 smaller items")));
    EXPECT_EQ(shown.children[1].allocatedBytes, 300);
    EXPECT_EQ(shown.children[1].fileCount, 3);
    EXPECT_THAT(shown.children[0].children, ElementsAre(Field(&SpaceNode::name, "a"), Field(&SpaceNode::name, "b"),
                                                        Field(&SpaceNode::name, "1 smaller item")));
    EXPECT_EQ(ReportTree::limit(tree, 100), tree);
}

TEST(ReportTree, ASummaryDrawsOnlyOutermostConsumersAndTheRestOfTheRoot) {
    SpaceSummary summary;
    summary.root = "/home/me";
    summary.allocatedBytes = 1000;
    auto consumer = [](std::string path, std::int64_t bytes) {
        SpaceNode result;
        result.path = std::move(path);
        result.name = result.path;
        result.allocatedBytes = bytes;
        return result;
    };
    summary.topConsumers = {consumer("/home/me/dev", 600), consumer("/home/me/dev/app/node_modules", 300),
                            consumer("/home/me/Downloads", 100)};
    const SpaceNode tree = ReportTree::fromSummary(summary);
    EXPECT_THAT(tree.children,
                ElementsAre(Field(&SpaceNode::path, "/home/me/dev"), Field(&SpaceNode::path, "/home/me/Downloads"),
                            Field(&SpaceNode::allocatedBytes, 300)));
}

}  // namespace
}  // namespace corvel
