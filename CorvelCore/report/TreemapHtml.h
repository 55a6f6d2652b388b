// The space tree drawn as a zoomable treemap that needs no script: one panel per folder that has
// children, each an inline SVG of that folder's children laid out by Treemap::layout. A tile of a
// folder links to the folder's own panel ("#tm-N") and each panel starts with a breadcrumb of links
// back up, so clicking zooms in and out through the page's fragment alone (CSS :target shows the
// panel); every tile carries its details (path, allocated, exclusive, category, risk) as a <title>
// that browsers show on hover. The root's panel comes last so it shows while no other is targeted.
//
//   html += TreemapHtml::render(ReportTree::limit(tree, 2000));
#pragma once

#include "space/SpaceNode.h"

#include <string>

namespace corvel::TreemapHtml {

inline constexpr double width = 960;
inline constexpr double height = 540;

std::string render(const SpaceNode& tree);

// The hover text of one tile: its path, sizes, category and risk, one per line.
std::string tileDetails(const SpaceNode& node);

}  // namespace corvel::TreemapHtml
