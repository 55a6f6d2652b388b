// A union of physical device ranges, so that blocks shared by clones are counted once.
//
// Callers collect the device ranges of every file they visit and ask for `bytes()` at the end:
//
//   ExtentUnion unionOfTree;
//   unionOfTree.add(rangesOfFileA);
//   unionOfTree.add(rangesOfCloneOfA);   // same blocks: adds nothing to bytes()
//   std::int64_t onDisk = unionOfTree.bytes();
//
// `add` only appends (amortised constant time); the list is merged when it grows past
// `compactionThreshold` ranges, which bounds memory on huge trees.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "common/Json.h"

namespace corvel {

// A closed range of byte offsets on a device: both `lower` and `upper` belong to it.
struct ExtentRange {
    std::int64_t lower = 0;
    std::int64_t upper = 0;

    bool operator==(const ExtentRange&) const = default;
};

void to_json(Json& json, const ExtentRange& range);
void from_json(const Json& json, ExtentRange& range);

struct ExtentUnion {
    std::vector<ExtentRange> ranges;

    static constexpr std::size_t compactionThreshold = 2'000'000;

    // Appends the ranges; merges the whole list once it holds more than compactionThreshold.
    void add(std::span<const ExtentRange> more);
    // Replaces the list by its merge.
    void compact();
    // Size of the union: every byte covered by at least one range, counted once.
    std::int64_t bytes() const;

    // Sorts by lower bound (stable) and folds ranges that overlap or touch (0…9 and 10…19
    // become 0…19). Ranges whose upper bound lies below their lower bound are empty and dropped.
    static std::vector<ExtentRange> merge(std::vector<ExtentRange> ranges);

    bool operator==(const ExtentUnion&) const = default;
};

void to_json(Json& json, const ExtentUnion& extentUnion);
void from_json(const Json& json, ExtentUnion& extentUnion);

}  // namespace corvel
