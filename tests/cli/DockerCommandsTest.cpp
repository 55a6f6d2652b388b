// `velmora docker` and `velmora insights` on recorded machines, driven in-process.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"
#include "common/Json.h"
#include "docker/DockerInventory.h"
#include "insights/Insight.h"
#include "space/SpaceSummary.h"
#include "support/Golden.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvel::cli {
namespace {

using clitest::machine;

clitest::Outcome velmora(const std::vector<std::string>& words) {
    return clitest::velmoraInProcess(words, [](CLI::App& app, CliContext& ctx) {
        registerDockerCommands(app, ctx);
        registerInsightsCommands(app, ctx);
        registerStatusCommands(app, ctx);
    });
}

std::vector<std::string> insightIDs(const Json& document) {
    std::vector<std::string> ids;
    for (const auto& insight : document.at("insights")) ids.push_back(insight.at("id").get<std::string>());
    return ids;
}

}  // namespace

// What a person reads for each recorded engine, in one reviewed file: the running one's engine,
// disk image on another volume, projects, databases, binds and the engine's reclaimable figure
// (never pruned); the stopped one's disk image still measured; the native Linux engine's data
// folder, said once.
TEST(DockerCommand, TextOutputsMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* name : {"mac-docker-running", "mac-docker-stopped", "linux-docker-engine"}) {
        const auto outcome = velmora({"docker", "--replay", machine(name)});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[name] = clitest::outputLines(outcome.out, machine(name));
    }
    testing::expectGolden("cli/docker-outputs.json", rendered);
}

TEST(DockerCommand, MissingProgramIsAFactNotAFailure) {
    auto outcome = velmora({"docker", "--replay", machine("macbook-air-m2")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "Docker CLI not found\n");
    outcome = velmora({"--json", "docker", "--replay", machine("macbook-air-m2")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Json::parse(outcome.out), Json({{"installed", false}}));
}

TEST(DockerCommand, JSONIsTheInventoryWithItsViews) {
    const auto outcome = velmora({"--json", "docker", "--replay", machine("mac-docker-running")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const auto document = Json::parse(outcome.out);
    EXPECT_EQ(document.at("executable"), "/usr/local/bin/docker");
    const auto inventory = document.at("inventory").get<DockerInventory>();
    EXPECT_EQ(inventory.serverVersion, "27.3.1");
    EXPECT_EQ(inventory.containers.size(), 5u);
    EXPECT_EQ(document.at("projectUsage"), Json(inventory.projectUsage()));
    EXPECT_EQ(document.at("projectUsage").at(0).at("name"), "legacy");
    EXPECT_EQ(document.at("databases").size(), 3u);
    EXPECT_EQ(document.at("bindMounts").size(), 2u);

    const auto stopped = Json::parse(velmora({"--json", "docker", "--replay", machine("mac-docker-stopped")}).out);
    EXPECT_FALSE(stopped.at("inventory").contains("serverVersion"));
    EXPECT_EQ(stopped.at("inventory").at("errors").size(), 1u);
    EXPECT_TRUE(stopped.at("inventory").contains("diskImage"));
}

TEST(InsightsCommand, RanksDockerAndDiskImageInsightsOfRecordedMachines) {
    clitest::TemporaryFolder data;
    auto document = Json::parse(
        velmora({"--json", "insights", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()}).out);
    EXPECT_EQ(insightIDs(document), (std::vector<std::string>{"docker.move", "space.scan"}));
    EXPECT_EQ(document.at("insights").at(0).at("bytes"), 41875931136);

    document = Json::parse(
        velmora({"--json", "insights", "--replay", machine("mac-docker-running"), "--data-dir", data.path()}).out);
    EXPECT_EQ(insightIDs(document), (std::vector<std::string>{"docker.reclaimable", "space.scan"}));

    const auto human = velmora({"insights", "--replay", machine("mac-docker-running"), "--data-dir", data.path()});
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_NE(human.out.find("Docker reports 6.25 GB reclaimable"), std::string::npos);
    EXPECT_NE(human.out.find("Risk: Protected · Action: Review → Docker"), std::string::npos);
    EXPECT_NE(human.out.find("No scan summary yet"), std::string::npos);

    // The engine reports 6,253,002,290 reclaimable bytes: the suggestion holds up to exactly that threshold.
    document = Json::parse(velmora({"--json", "insights", "--replay", machine("mac-docker-running"), "--data-dir",
                                    data.path(), "--min-bytes", "6253002290"})
                               .out);
    EXPECT_EQ(insightIDs(document), (std::vector<std::string>{"docker.reclaimable", "space.scan"}));
    document = Json::parse(velmora({"--json", "insights", "--replay", machine("mac-docker-running"), "--data-dir",
                                    data.path(), "--min-bytes", "6253002291"})
                               .out);
    EXPECT_EQ(insightIDs(document), std::vector<std::string>{"space.scan"});
}

TEST(InsightsCommand, ReadsTheLastScanSummaryFromTheDataFolder) {
    clitest::TemporaryFolder data;
    SpaceSummary summary;
    summary.root = "/Users/sam";
    summary.scannedAt = *ISO8601::parse("2026-11-01T08:00:00Z");
    SpaceNode derived;
    derived.path = "/Users/sam/Library/Developer/Xcode/DerivedData";
    derived.name = "DerivedData";
    derived.allocatedBytes = derived.exclusiveBytes = 12000000000;
    derived.classification.risk = CleanupRisk::green;
    SpaceNode photos;
    photos.path = "/Users/sam/Pictures/Photos Library.photoslibrary";
    photos.name = "Photos Library.photoslibrary";
    photos.allocatedBytes = photos.exclusiveBytes = 80000000000;
    photos.classification.risk = CleanupRisk::red;
    summary.topConsumers = {photos, derived};
    summary.credentialsInTrash = {"/Users/sam/.Trash/id_rsa"};
    summary.save(data.path());

    const auto outcome =
        velmora({"--json", "insights", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(insightIDs(Json::parse(outcome.out)),
              (std::vector<std::string>{"space.reviewable", "safety.trash.credentials",
                                        "space.big./Users/sam/Pictures/Photos Library.photoslibrary", "docker.move"}));

    const auto human = velmora({"insights", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    EXPECT_NE(human.out.find("Space suggestions from the scan of /Users/sam at 2026-11-01T08:00:00Z."),
              std::string::npos);

    // A scan of a folder outside the recorded home was made on this machine, not on the recording.
    summary.root = "/work/elsewhere";
    summary.save(data.path());
    const auto foreign = velmora({"insights", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    EXPECT_NE(foreign.out.find("Last scan summary ignored: it covers /work/elsewhere"), std::string::npos)
        << foreign.out;
    EXPECT_EQ(foreign.out.find("Photos Library"), std::string::npos) << foreign.out;

    AtomicFile::write(std::filesystem::path(data.path()) / SpaceSummary::fileName, "{broken");
    const auto broken = velmora({"insights", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    EXPECT_EQ(broken.status, 0);
    EXPECT_NE(broken.out.find("! Last scan summary ignored: "), std::string::npos) << broken.out;
    EXPECT_NE(broken.out.find("No storage analysis yet"), std::string::npos);
}

TEST(InsightsCommand, ANegativeOrNonNumericThresholdIsBadUsage) {
    clitest::TemporaryFolder data;
    auto outcome = velmora({"insights", "--min-bytes", "-1", "--data-dir", data.path()});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("--min-bytes"), std::string::npos) << outcome.err;
    outcome = velmora({"insights", "--min-bytes", "lots", "--data-dir", data.path()});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("--min-bytes"), std::string::npos) << outcome.err;
}

TEST(StatusWithInsights, TopInsightsFollowTheHealthLinesAndJoinTheJSON) {
    clitest::TemporaryFolder data;
    const auto human = velmora({"status", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    ASSERT_EQ(human.status, 0) << human.err;
    const auto health = human.out.find("Health\n");
    const auto insights = human.out.find("Insights\n");
    ASSERT_NE(health, std::string::npos);
    ASSERT_NE(insights, std::string::npos);
    EXPECT_LT(health, insights);
    EXPECT_NE(human.out.find("Docker's disk image uses 41.88 GB on the internal SSD", insights), std::string::npos);

    const auto json =
        velmora({"--json", "status", "--replay", machine("mac-docker-stopped"), "--data-dir", data.path()});
    ASSERT_EQ(json.status, 0) << json.err;
    const auto document = Json::parse(json.out);
    EXPECT_TRUE(document.contains("report"));
    EXPECT_EQ(insightIDs(document), (std::vector<std::string>{"docker.move", "space.scan"}));
    EXPECT_EQ(document.at("insights").at(0).get<Insight>().destination, Insight::Destination::docker);
}

}  // namespace corvel::cli
