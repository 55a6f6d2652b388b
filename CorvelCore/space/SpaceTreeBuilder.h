// A sink that assembles the streamed nodes into one SpaceNode tree in memory, for front ends
// that show the tree (the command line's indented tree, the space screen).
#pragma once

#include "space/SpaceScanSink.h"

#include <optional>
#include <vector>

namespace corvel {

class SpaceTreeBuilder final : public SpaceScanSink {
public:
    void beginNode(const SpaceNode& node) override;
    void endNode() override;
    void finish(const SpaceScanReport& report) override;

    // The root once its endNode arrived; an empty node before that.
    const SpaceNode& root() const { return root_; }
    const std::optional<SpaceScanReport>& report() const { return report_; }

private:
    std::vector<SpaceNode> open_;
    SpaceNode root_;
    std::optional<SpaceScanReport> report_;
};

}  // namespace corvel
