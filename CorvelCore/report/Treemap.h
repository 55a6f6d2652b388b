// The squarified treemap layout: sizes laid out as rectangles filling a box, each rectangle's
// area proportional to its size, rows chosen so the rectangles stay as close to squares as the
// sizes allow (Bruls, Huizing and van Wijk). Pure arithmetic; the report draws the result.
//
//   auto tiles = Treemap::layout({500, 300, 200}, {0, 0, 960, 540});
//   // tiles[0] covers half the box; tiles[i].index names the size it stands for
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvel {

struct TreemapRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    std::size_t index = 0;  // position of the size in the input

    double area() const { return width * height; }
    bool operator==(const TreemapRect&) const = default;
};

namespace Treemap {

// One rectangle per positive size, largest first; sizes of 0 or less get none. The rectangles
// tile `box` without overlapping.
std::vector<TreemapRect> layout(const std::vector<std::int64_t>& sizes, const TreemapRect& box);

}  // namespace Treemap
}  // namespace corvel
