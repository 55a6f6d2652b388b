#include "space/ExtentUnion.h"

#include <algorithm>
#include <limits>

#include "common/CheckedArithmetic.h"

namespace corvel {

namespace {

// True when `next` (whose lower bound is not below `last`'s) overlaps or touches `last`.
bool joins(const ExtentRange& last, const ExtentRange& next) {
    return last.upper == std::numeric_limits<std::int64_t>::max() || next.lower <= last.upper + 1;
}

// A list that merge() would return unchanged: ascending, no empty ranges, no two joining.
bool isMerged(const std::vector<ExtentRange>& ranges) {
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        if (ranges[i].upper < ranges[i].lower) return false;
        if (i > 0 && (ranges[i].lower < ranges[i - 1].lower || joins(ranges[i - 1], ranges[i]))) return false;
    }
    return true;
}

std::int64_t sizeOf(const std::vector<ExtentRange>& merged) {
    std::int64_t total = 0;
    for (const ExtentRange& range : merged)
        total = checkedAdd(total, checkedAdd(checkedSubtract(range.upper, range.lower), 1));
    return total;
}

}  // namespace

void to_json(Json& json, const ExtentRange& range) {
    json = Json{{"lower", range.lower}, {"upper", range.upper}};
}

void from_json(const Json& json, ExtentRange& range) {
    range.lower = required<std::int64_t>(json, "lower");
    range.upper = required<std::int64_t>(json, "upper");
}

void ExtentUnion::add(std::span<const ExtentRange> more) {
    ranges.insert(ranges.end(), more.begin(), more.end());
    if (ranges.size() > compactionThreshold) compact();
}

void ExtentUnion::compact() {
    ranges = merge(std::move(ranges));
}

std::int64_t ExtentUnion::bytes() const {
    // The final count of a walk usually follows a compact(); skip the copy then.
    if (isMerged(ranges)) return sizeOf(ranges);
    return sizeOf(merge(ranges));
}

std::vector<ExtentRange> ExtentUnion::merge(std::vector<ExtentRange> input) {
    std::erase_if(input, [](const ExtentRange& range) { return range.upper < range.lower; });
    std::stable_sort(input.begin(), input.end(),
                     [](const ExtentRange& a, const ExtentRange& b) { return a.lower < b.lower; });
    std::vector<ExtentRange> merged;
    for (const ExtentRange& next : input) {
        if (!merged.empty() && joins(merged.back(), next)) {
            merged.back().upper = std::max(merged.back().upper, next.upper);
        } else {
            merged.push_back(next);
        }
    }
    return merged;
}

void to_json(Json& json, const ExtentUnion& extentUnion) {
    json = Json{{"ranges", extentUnion.ranges}};
}

void from_json(const Json& json, ExtentUnion& extentUnion) {
    extentUnion.ranges = required<std::vector<ExtentRange>>(json, "ranges");
}

}  // namespace corvel
