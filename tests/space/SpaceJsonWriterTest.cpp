// SpaceNode's JSON, and the streamed document agreeing with the tree built in memory.
#include "space/SpaceJsonWriter.h"
#include "space/SpaceTreeBuilder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace corvel {
namespace {

SpaceNode leaf(const std::string& name, std::int64_t bytes) {
    SpaceNode node;
    node.path = "/r/" + name;
    node.name = name;
    node.allocatedBytes = bytes;
    node.exclusiveBytes = bytes / 2;
    node.logicalBytes = bytes - 1;
    node.fileCount = 1;
    node.classification = SpaceClassification::unknown();
    return node;
}

void stream(const SpaceNode& node, SpaceScanSink& sink) {
    SpaceNode fields = node;
    fields.children.clear();
    sink.beginNode(fields);
    for (const auto& child : node.children) stream(child, sink);
    sink.endNode();
}

SpaceNode sampleTree() {
    SpaceNode root = leaf("", 100);
    root.path = "/r";
    root.name = "/r";
    root.isDirectory = true;
    root.lastModified = *ISO8601::parse("2026-11-02T09:30:00.250Z");
    SpaceNode folder = leaf("dir", 60);
    folder.isDirectory = true;
    folder.accessDenied = true;
    folder.children = {leaf("dir/x", 30), leaf("dir/caf\xC3\xA9", 20)};
    SpaceNode aggregate = leaf("", 10);
    aggregate.path = "/r";
    aggregate.name = "3 smaller items";
    aggregate.aggregatedItems = 3;
    root.children = {folder, leaf("file", 30), aggregate};
    return root;
}

TEST(SpaceNodeJson, KeysInFieldOrderAndRoundTrip) {
    const SpaceNode tree = sampleTree();
    const Json json = tree;
    std::vector<std::string> keys;
    for (const auto& item : json.items()) keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"path", "name", "isDirectory", "logicalBytes", "allocatedBytes",
                                              "exclusiveBytes", "fileCount", "directoryCount", "lastModified",
                                              "accessDenied", "aggregatedItems", "classification", "children"}));
    EXPECT_EQ(json["lastModified"], "2026-11-02T09:30:00.250Z");
    EXPECT_FALSE(json["children"][1].contains("lastModified"));
    EXPECT_EQ(json.get<SpaceNode>(), tree);
    EXPECT_THROW(Json::parse(R"({"path": "/r"})").get<SpaceNode>(), DecodingError);
}

TEST(SpaceJsonWriter, StreamsTheSameTreeTheBuilderBuildsFollowedByTheReport) {
    const SpaceNode tree = sampleTree();
    std::ostringstream out;
    SpaceJsonWriter writer(out);
    SpaceTreeBuilder builder;
    SpaceScanFanOut both({&writer, &builder});
    stream(tree, both);
    SpaceScanReport report;
    report.root = "/r";
    report.allocatedBytes = 100;
    both.finish(report);

    EXPECT_EQ(builder.root(), tree);
    const Json document = Json::parse(out.str());
    EXPECT_EQ(document["tree"].get<SpaceNode>(), tree);
    EXPECT_EQ(document["report"].get<SpaceScanReport>(), report);
    EXPECT_EQ(document.size(), 2u);
}

TEST(SpaceJsonWriter, MisorderedCallsAreProgrammingErrors) {
    std::ostringstream out;
    SpaceJsonWriter writer(out);
    EXPECT_THROW(writer.endNode(), std::logic_error);
    SpaceTreeBuilder builder;
    EXPECT_THROW(builder.endNode(), std::logic_error);
}

}  // namespace
}  // namespace corvel
