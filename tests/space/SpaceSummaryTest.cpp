// The summary a scan leaves for the insights: which nodes it names, and how it survives the disk.
#include "SpaceTestFiles.h"
#include "common/AtomicFile.h"
#include "space/SpaceSummary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using spacetest::TemporaryFolder;
using ::testing::HasSubstr;

SpaceNode node(const std::string& path, std::int64_t bytes, SpaceCategory category,
               std::vector<SpaceNode> children = {}) {
    SpaceNode result;
    result.path = path;
    result.name = path.substr(path.rfind('/') + 1);
    result.isDirectory = true;
    result.allocatedBytes = bytes;
    result.exclusiveBytes = bytes;
    result.classification.category = category;
    result.classification.risk = category == SpaceCategory::nodeModules ? CleanupRisk::yellow : CleanupRisk::gray;
    result.classification.rationale = "test";
    result.children = std::move(children);
    return result;
}

SpaceNode sampleTree() {
    SpaceNode aggregate = node("/h", 1, SpaceCategory::other);
    aggregate.aggregatedItems = 40;
    aggregate.isDirectory = false;
    return node("/h", 1000, SpaceCategory::other,
                {node("/h/dev", 600, SpaceCategory::projects,
                      {node("/h/dev/app/node_modules", 300, SpaceCategory::nodeModules),
                       node("/h/dev/app/src", 100, SpaceCategory::projects)}),
                 node("/h/Downloads", 350, SpaceCategory::downloads,
                      {node("/h/Downloads/more", 200, SpaceCategory::downloads)}),
                 node("/h/.cache", 20, SpaceCategory::caches), aggregate});
}

TEST(SpaceSummaryConsumers, InnermostChangesOfCategoryLargestFirstWithoutChildren) {
    const auto consumers = SpaceSummary::selectTopConsumers(sampleTree(), 10);
    std::vector<std::string> paths;
    for (const auto& consumer : consumers) {
        paths.push_back(consumer.path);
        EXPECT_TRUE(consumer.children.empty());
    }
    // dev is left out: its node_modules is listed instead. Downloads/more keeps Downloads' category,
    // so Downloads itself is the consumer. The aggregate is never one.
    EXPECT_EQ(paths, (std::vector<std::string>{"/h/Downloads", "/h/dev/app/node_modules", "/h/.cache"}));
    EXPECT_EQ(SpaceSummary::selectTopConsumers(sampleTree(), 2).size(), 2u);
}

TEST(SpaceSummaryFile, SavesAndLoadsTheSameSummary) {
    TemporaryFolder folder;
    SpaceScanReport report;
    report.root = "/h";
    report.allocatedBytes = 1000;
    report.wasCancelled = true;
    report.credentialsInTrash = {"/h/.Trash/id_rsa"};
    const auto scannedAt = *ISO8601::parse("2026-11-02T09:30:00Z");
    const SpaceSummary summary = SpaceSummary::fromScan(sampleTree(), report, scannedAt);
    summary.save(folder.root());

    std::string problem = "stale";
    const auto loaded = SpaceSummary::load(folder.root(), &problem);
    ASSERT_TRUE(loaded.has_value());
    EXPECT_EQ(*loaded, summary);
    EXPECT_TRUE(problem.empty());
    EXPECT_TRUE(loaded->wasCancelled);
    EXPECT_EQ(loaded->credentialsInTrash, report.credentialsInTrash);
    EXPECT_EQ(loaded->topConsumers.size(), 3u);
}

TEST(SpaceSummaryFile, MissingMeansNoScanYetAndCorruptIsReportedByName) {
    TemporaryFolder folder;
    std::string problem = "stale";
    EXPECT_FALSE(SpaceSummary::load(folder.root(), &problem).has_value());
    EXPECT_TRUE(problem.empty());

    folder.write(SpaceSummary::fileName, "{\"root\": \"/h\", \"scannedAt\": ");
    EXPECT_FALSE(SpaceSummary::load(folder.root(), &problem).has_value());
    EXPECT_THAT(problem, HasSubstr(SpaceSummary::fileName));

    folder.write(SpaceSummary::fileName, "{\"root\": \"/h\", \"scannedAt\": \"yesterday\", \"topConsumers\": []}");
    EXPECT_FALSE(SpaceSummary::load(folder.root(), &problem).has_value());
    EXPECT_THAT(problem, HasSubstr("scannedAt"));

    // The next scan simply replaces a corrupt file.
    SpaceSummary fresh;
    fresh.root = "/h";
    fresh.save(folder.root());
    EXPECT_TRUE(SpaceSummary::load(folder.root()).has_value());
}

}  // namespace
}  // namespace corvel
