#include "space/SpaceNode.h"

#include "common/CheckedArithmetic.h"

namespace corvel {

std::int64_t SpaceNode::sharedBytes() const {
    return allocatedBytes > exclusiveBytes ? checkedSubtract(allocatedBytes, exclusiveBytes) : 0;
}

void to_json(Json& j, const SpaceNode& node) {
    j = Json::object();
    j["path"] = node.path;
    j["name"] = node.name;
    j["isDirectory"] = node.isDirectory;
    j["logicalBytes"] = node.logicalBytes;
    j["allocatedBytes"] = node.allocatedBytes;
    j["exclusiveBytes"] = node.exclusiveBytes;
    j["fileCount"] = node.fileCount;
    j["directoryCount"] = node.directoryCount;
    putOptional(j, "lastModified", node.lastModified);
    j["accessDenied"] = node.accessDenied;
    j["aggregatedItems"] = node.aggregatedItems;
    j["classification"] = node.classification;
    Json children = Json::array();
    for (const auto& child : node.children) children.push_back(child);
    j["children"] = std::move(children);
}

void from_json(const Json& j, SpaceNode& node) {
    node.path = required<std::string>(j, "path");
    node.name = required<std::string>(j, "name");
    node.isDirectory = required<bool>(j, "isDirectory");
    node.logicalBytes = required<std::int64_t>(j, "logicalBytes");
    node.allocatedBytes = required<std::int64_t>(j, "allocatedBytes");
    node.exclusiveBytes = required<std::int64_t>(j, "exclusiveBytes");
    node.fileCount = required<std::int64_t>(j, "fileCount");
    node.directoryCount = required<std::int64_t>(j, "directoryCount");
    node.lastModified = optionalValue<TimePoint>(j, "lastModified");
    node.accessDenied = required<bool>(j, "accessDenied");
    node.aggregatedItems = required<std::int64_t>(j, "aggregatedItems");
    node.classification = required<SpaceClassification>(j, "classification");
    node.children = valueOr<std::vector<SpaceNode>>(j, "children", {});
}

}  // namespace corvel
