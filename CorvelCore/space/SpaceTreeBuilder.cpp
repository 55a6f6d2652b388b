#include "space/SpaceTreeBuilder.h"

#include <stdexcept>

namespace corvel {

void SpaceTreeBuilder::beginNode(const SpaceNode& node) { open_.push_back(node); }

void SpaceTreeBuilder::endNode() {
    if (open_.empty()) throw std::logic_error("SpaceTreeBuilder: endNode without beginNode");
    SpaceNode done = std::move(open_.back());
    open_.pop_back();
    if (open_.empty()) {
        root_ = std::move(done);
    } else {
        open_.back().children.push_back(std::move(done));
    }
}

void SpaceTreeBuilder::finish(const SpaceScanReport& report) { report_ = report; }

}  // namespace corvel
