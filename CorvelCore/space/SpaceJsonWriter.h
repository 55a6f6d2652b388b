// A sink that streams the scan as one JSON document while the nodes arrive, without building
// the tree in memory:
//
//   {"tree": {"path": ..., ..., "children": [{...}, ...]}, "report": {...}}
//
// Each node is written with the keys of SpaceNode, `children` last; the report follows the tree.
#pragma once

#include "space/SpaceScanSink.h"

#include <ostream>
#include <vector>

namespace corvel {

class SpaceJsonWriter final : public SpaceScanSink {
public:
    explicit SpaceJsonWriter(std::ostream& out) : out_(out) {}

    void beginNode(const SpaceNode& node) override;
    void endNode() override;
    void finish(const SpaceScanReport& report) override;

private:
    std::ostream& out_;
    std::vector<bool> hasChildren_;  // per open node: whether a child was written yet
    bool started_ = false;
};

}  // namespace corvel
