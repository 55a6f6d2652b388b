#include "report/Treemap.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace corvel::Treemap {
namespace {

struct Item {
    double area = 0;
    std::size_t index = 0;
};

// The worst aspect ratio of a row of areas laid along a side of length `side`.
double worstRatio(double rowArea, double smallest, double largest, double side) {
    if (rowArea <= 0 || side <= 0 || smallest <= 0) return std::numeric_limits<double>::infinity();
    const double sideSquared = side * side;
    const double areaSquared = rowArea * rowArea;
    return std::max(sideSquared * largest / areaSquared, areaSquared / (sideSquared * smallest));
}

// Lays `row` along the shorter side of `free` and returns what is left of the box.
TreemapRect placeRow(const std::vector<Item>& row, double rowArea, TreemapRect free, std::vector<TreemapRect>& out) {
    const bool alongHeight = free.width >= free.height;  // a column at the left, or a row at the top
    const double side = alongHeight ? free.height : free.width;
    const double thickness = side > 0 ? rowArea / side : 0;
    double offset = 0;
    for (const auto& item : row) {
        const double length = thickness > 0 ? item.area / thickness : 0;
        if (alongHeight) {
            out.push_back({free.x, free.y + offset, thickness, length, item.index});
        } else {
            out.push_back({free.x + offset, free.y, length, thickness, item.index});
        }
        offset += length;
    }
    if (alongHeight) {
        free.x += thickness;
        free.width = std::max(0.0, free.width - thickness);
    } else {
        free.y += thickness;
        free.height = std::max(0.0, free.height - thickness);
    }
    return free;
}

}  // namespace

std::vector<TreemapRect> layout(const std::vector<std::int64_t>& sizes, const TreemapRect& box) {
    std::vector<Item> items;
    double total = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        if (sizes[i] <= 0) continue;
        items.push_back({static_cast<double>(sizes[i]), i});
        total += static_cast<double>(sizes[i]);
    }
    std::vector<TreemapRect> out;
    if (items.empty() || box.width <= 0 || box.height <= 0) return out;
    std::stable_sort(items.begin(), items.end(), [](const Item& a, const Item& b) { return a.area > b.area; });
    const double scale = box.width * box.height / total;
    for (auto& item : items) item.area *= scale;

    TreemapRect free = box;
    std::vector<Item> row;
    double rowArea = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const double side = std::min(free.width, free.height);
        const auto& item = items[i];
        if (row.empty()) {
            row.push_back(item);
            rowArea = item.area;
            continue;
        }
        // Items arrive largest first, so the row's largest is its first and its smallest the newcomer.
        const double current = worstRatio(rowArea, row.back().area, row.front().area, side);
        const double extended = worstRatio(rowArea + item.area, item.area, row.front().area, side);
        if (extended <= current) {
            row.push_back(item);
            rowArea += item.area;
        } else {
            free = placeRow(row, rowArea, free, out);
            row.assign(1, item);
            rowArea = item.area;
        }
    }
    if (!row.empty()) {
        // The last row takes whatever is left so rounding never leaves a sliver uncovered.
        const bool alongHeight = free.width >= free.height;
        const double side = alongHeight ? free.height : free.width;
        const double depth = alongHeight ? free.width : free.height;
        rowArea = side * depth;
        double rowTotal = 0;
        for (const auto& item : row) rowTotal += item.area;
        for (auto& item : row) item.area = rowTotal > 0 ? item.area / rowTotal * rowArea : 0;
        placeRow(row, rowArea, free, out);
    }
    return out;
}

}  // namespace corvel::Treemap
