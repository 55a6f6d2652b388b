// The squarified treemap layout: rectangles whose areas are proportional to their weights, tiling
// the bounds without overlap, with aspect ratios kept near square so that names fit and sizes can
// be compared by eye. A pure function of numbers, free of any widget, so that it is tested alone
// and can be run again on every resize.
//
//   auto cells = TreemapLayout::squarify({300, 200, 100}, {0, 0, 640, 480});
//   cells[0];   // the rectangle of the first weight (input order is kept)
#pragma once

#include <vector>

namespace corvel::desktop {

struct TreemapRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double area() const { return width * height; }
    bool operator==(const TreemapRect&) const = default;
};

namespace TreemapLayout {

// One rectangle per weight, in the order of `weights`. Weights of zero or less (and NaN) get an
// empty rectangle at the bounds' corner; the others share the bounds' whole area.
std::vector<TreemapRect> squarify(const std::vector<double>& weights, const TreemapRect& bounds);

}  // namespace TreemapLayout
}  // namespace corvel::desktop
