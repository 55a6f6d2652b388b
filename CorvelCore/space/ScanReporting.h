// Turns a compact ScanTree into what people and other parts of the system read: the scan report
// (totals, largest files, duplicates, totals per category) and a bounded SpaceNode tree streamed
// into a sink. Every node is classified by the catalogue. A folder lists at most `maxChildren`
// children, each at least `minimumShare` of the folder; the rest are folded into one aggregate
// node, so a tree of millions of files stays a few hundred nodes.
//
// Totals per category give each folder's own files the category of the folder, or, when the
// catalogue has no opinion on it ("Other"), the category of its nearest classified ancestor.
//
//   SpaceScanReport report = ScanReporting::report(tree, catalog);
//   SpaceTreeBuilder builder;
//   ScanReporting::emit(tree, catalog, {.maxDepth = 3}, report, builder);
#pragma once

#include "space/ScanTree.h"
#include "space/SpaceCatalog.h"
#include "space/SpaceScanReport.h"
#include "space/SpaceScanSink.h"

#include <cstddef>

namespace corvel {

struct SpaceTreeOptions {
    int maxDepth = 3;              // levels below the root that get children
    std::size_t maxChildren = 12;  // per folder, before folding the rest
    double minimumShare = 0.005;   // of the folder's allocated bytes, before folding
};

namespace ScanReporting {

SpaceScanReport report(const ScanTree& tree, const SpaceCatalog& catalog);

// Streams the tree into `sink` (beginNode/endNode pairs), then calls finish(report).
void emit(const ScanTree& tree, const SpaceCatalog& catalog, const SpaceTreeOptions& options,
          const SpaceScanReport& report, SpaceScanSink& sink);

// One folder of the tree as a classified node without children (the cleanup selection reads
// folders of a scan this way).
SpaceNode folderNodeOf(const ScanTree& tree, const ScanDirectory& folder, const SpaceCatalog& catalog);

// Text for a name or path fit for people and JSON (invalid UTF-8 repaired).
std::string displayText(std::string_view raw);

}  // namespace ScanReporting
}  // namespace corvel
