#include "widgets/TreemapLayout.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace corvel::desktop::TreemapLayout {
namespace {

struct Row {
    std::vector<std::size_t> items;
    double sum = 0;
    double smallest = 0;
    double largest = 0;
};

// The worst aspect ratio of a row laid along a side of length `side`, with one more area added.
double worstWith(const Row& row, double area, double side) {
    const double sum = row.sum + area;
    const double smallest = row.items.empty() ? area : std::min(row.smallest, area);
    const double largest = row.items.empty() ? area : std::max(row.largest, area);
    const double sideSquared = side * side;
    const double sumSquared = sum * sum;
    return std::max(sideSquared * largest / sumSquared, sumSquared / (sideSquared * smallest));
}

double worst(const Row& row, double side) {
    const double sideSquared = side * side;
    const double sumSquared = row.sum * row.sum;
    return std::max(sideSquared * row.largest / sumSquared, sumSquared / (sideSquared * row.smallest));
}

// Lays the row along the shorter side of `free` and takes its strip off `free`.
void placeRow(const Row& row, const std::vector<double>& areas, TreemapRect& free, std::vector<TreemapRect>& out) {
    const bool alongHeight = free.width >= free.height;
    const double side = alongHeight ? free.height : free.width;
    const double thickness = side > 0 ? row.sum / side : 0;
    double offset = 0;
    for (std::size_t k = 0; k < row.items.size(); ++k) {
        const std::size_t item = row.items[k];
        // The last item takes what is left of the side, so rounding never leaves a gap.
        const double length = k + 1 == row.items.size() ? side - offset : areas[item] / thickness;
        out[item] = alongHeight ? TreemapRect{free.x, free.y + offset, thickness, length}
                                : TreemapRect{free.x + offset, free.y, length, thickness};
        offset += length;
    }
    if (alongHeight) {
        free.x += thickness;
        free.width = std::max(0.0, free.width - thickness);
    } else {
        free.y += thickness;
        free.height = std::max(0.0, free.height - thickness);
    }
}

}  // namespace

std::vector<TreemapRect> squarify(const std::vector<double>& weights, const TreemapRect& bounds) {
    std::vector<TreemapRect> out(weights.size(), TreemapRect{bounds.x, bounds.y, 0, 0});
    std::vector<std::size_t> order;
    double total = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (weights[i] > 0 && std::isfinite(weights[i])) {
            order.push_back(i);
            total += weights[i];
        }
    }
    if (order.empty() || bounds.width <= 0 || bounds.height <= 0) return out;
    // Largest first: the algorithm's aspect ratios depend on meeting the big areas early.
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return weights[a] > weights[b]; });

    const double scale = bounds.area() / total;
    std::vector<double> areas(weights.size(), 0);
    for (const auto i : order) areas[i] = weights[i] * scale;

    TreemapRect free = bounds;
    Row row;
    for (const auto item : order) {
        const double side = std::min(free.width, free.height);
        if (!row.items.empty() && worstWith(row, areas[item], side) > worst(row, side)) {
            placeRow(row, areas, free, out);
            row = {};
        }
        row.smallest = row.items.empty() ? areas[item] : std::min(row.smallest, areas[item]);
        row.largest = row.items.empty() ? areas[item] : std::max(row.largest, areas[item]);
        row.sum += areas[item];
        row.items.push_back(item);
    }
    if (!row.items.empty()) placeRow(row, areas, free, out);
    return out;
}

}  // namespace corvel::desktop::TreemapLayout
