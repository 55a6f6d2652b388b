// Where a space scan's results go. The scanner does not know whether a tree is being built in
// memory (SpaceTreeBuilder), JSON streamed to a file (SpaceJsonWriter) or events recorded by a
// test: it calls beginNode for a node (whose `children` are empty), then the same for each of its
// children, then endNode; finish closes the run with the report.
//
//   SpaceTreeBuilder builder;
//   ScanReporting::emit(tree, catalog, treeOptions, report, builder);
//   const SpaceNode& root = builder.root();
#pragma once

#include "space/SpaceNode.h"
#include "space/SpaceScanReport.h"

#include <vector>

namespace corvel {

class SpaceScanSink {
public:
    virtual ~SpaceScanSink() = default;
    virtual void beginNode(const SpaceNode& node) = 0;
    virtual void endNode() = 0;
    virtual void finish(const SpaceScanReport& report) = 0;
};

// Passes every call on to several sinks, in order.
class SpaceScanFanOut final : public SpaceScanSink {
public:
    explicit SpaceScanFanOut(std::vector<SpaceScanSink*> sinks) : sinks_(std::move(sinks)) {}
    void beginNode(const SpaceNode& node) override {
        for (auto* sink : sinks_) sink->beginNode(node);
    }
    void endNode() override {
        for (auto* sink : sinks_) sink->endNode();
    }
    void finish(const SpaceScanReport& report) override {
        for (auto* sink : sinks_) sink->finish(report);
    }

private:
    std::vector<SpaceScanSink*> sinks_;
};

}  // namespace corvel
