#include "report/ReportTree.h"

#include "common/CheckedArithmetic.h"
#include "common/PathText.h"

#include <fmt/format.h>

#include <queue>
#include <unordered_set>

namespace corvel::ReportTree {
namespace {

struct Candidate {
    const SpaceNode* node = nullptr;
    bool operator<(const Candidate& other) const { return node->allocatedBytes < other.node->allocatedBytes; }
};

void foldInto(SpaceNode& aggregate, const SpaceNode& left) {
    aggregate.logicalBytes = checkedAdd(aggregate.logicalBytes, left.logicalBytes);
    aggregate.allocatedBytes = checkedAdd(aggregate.allocatedBytes, left.allocatedBytes);
    aggregate.exclusiveBytes = checkedAdd(aggregate.exclusiveBytes, left.exclusiveBytes);
    aggregate.fileCount = checkedAdd(aggregate.fileCount, left.fileCount);
    aggregate.directoryCount = checkedAdd(aggregate.directoryCount, left.directoryCount + (left.isDirectory ? 1 : 0));
    aggregate.aggregatedItems = checkedAdd(aggregate.aggregatedItems, std::max<std::int64_t>(1, left.aggregatedItems));
}

// Moves the kept nodes out of `node`, folding the others: each node is moved once, never copied
// with its subtree. Moving a children vector keeps its elements where they are, so the addresses
// in `kept` still name them.
SpaceNode takeKept(SpaceNode&& node, const std::unordered_set<const SpaceNode*>& kept) {
    std::vector<SpaceNode> children = std::move(node.children);
    SpaceNode copy = std::move(node);
    copy.children.clear();
    SpaceNode aggregate;
    aggregate.path = copy.path;
    aggregate.classification = copy.classification;
    for (auto& child : children) {
        if (kept.contains(&child)) {
            copy.children.push_back(takeKept(std::move(child), kept));
        } else {
            foldInto(aggregate, child);
        }
    }
    if (aggregate.aggregatedItems > 0) {
        aggregate.name =
            fmt::format("{} smaller {}", aggregate.aggregatedItems, aggregate.aggregatedItems == 1 ? "item" : "items");
        copy.children.push_back(std::move(aggregate));
    }
    return copy;
}

}  // namespace

SpaceNode limit(SpaceNode tree, std::size_t maxNodes) {
    const std::size_t budget = std::max<std::size_t>(1, maxNodes);
    std::unordered_set<const SpaceNode*> kept{&tree};
    std::priority_queue<Candidate> frontier;
    for (const auto& child : tree.children) frontier.push({&child});
    while (kept.size() < budget && !frontier.empty()) {
        const SpaceNode* next = frontier.top().node;
        frontier.pop();
        kept.insert(next);
        for (const auto& child : next->children) frontier.push({&child});
    }
    return takeKept(std::move(tree), kept);
}

SpaceNode fromSummary(const SpaceSummary& summary) {
    SpaceNode root;
    root.path = summary.root;
    root.name = summary.root;
    root.isDirectory = true;
    root.allocatedBytes = summary.allocatedBytes;
    std::int64_t listed = 0;
    for (const auto& consumer : summary.topConsumers) {
        // Top consumers may nest (a node_modules inside a listed project); only the outermost
        // ones are children here, so no byte is drawn twice.
        bool nested = false;
        for (const auto& other : summary.topConsumers) {
            if (&other != &consumer && isStrictlyWithin(consumer.path, other.path)) nested = true;
        }
        if (nested) continue;
        root.children.push_back(consumer);
        listed = checkedAdd(listed, consumer.allocatedBytes);
    }
    if (summary.allocatedBytes > listed) {
        SpaceNode rest;
        rest.path = summary.root;
        rest.name = "everything else";
        rest.allocatedBytes = summary.allocatedBytes - listed;
        rest.aggregatedItems = 1;
        root.children.push_back(std::move(rest));
    }
    return root;
}

std::size_t nodeCount(const SpaceNode& tree) {
    std::size_t count = 1;
    for (const auto& child : tree.children) count += nodeCount(child);
    return count;
}

}  // namespace corvel::ReportTree
