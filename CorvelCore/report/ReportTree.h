// The space tree a report shows, bounded. A scan's tree can be large; the report keeps the
// largest nodes, in order of size across the whole tree, up to a budget, and folds every other
// child of a kept folder into one aggregate node per folder (the way the scanner folds small
// items), so sizes still add up and a scan of a million files gives a page of bounded size.
//
//   SpaceNode shown = ReportTree::limit(builder.root(), 2000);
//   SpaceNode fromLastScan = ReportTree::fromSummary(*SpaceSummary::load(dataDir));
#pragma once

#include "space/SpaceNode.h"
#include "space/SpaceSummary.h"

#include <cstddef>

namespace corvel::ReportTree {

inline constexpr std::size_t defaultMaxNodes = 2000;

// At most `maxNodes` nodes of `tree` (the root always, `maxNodes` below 1 counts as 1), plus at
// most one aggregate per kept folder holding what was left out of it.
SpaceNode limit(SpaceNode tree, std::size_t maxNodes);

// A one-level tree of the last scan: its top consumers under the scanned root, and one aggregate
// for the rest of the root's allocated bytes.
SpaceNode fromSummary(const SpaceSummary& summary);

// Every node of the tree, the root included.
std::size_t nodeCount(const SpaceNode& tree);

}  // namespace corvel::ReportTree
