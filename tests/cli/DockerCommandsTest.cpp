// `velmora docker` and `velmora insights` on recorded machines, driven in-process.
#include "Commands.h"
#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"
#include "common/Json.h"
#include "space/SpaceSummary.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace corvel::cli {
namespace {

using clitest::machine;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

clitest::Outcome velmora(const std::vector<std::string>& words) {
    return clitest::velmoraInProcess(words, [](CLI::App& app, CliContext& ctx) {
        registerDockerCommands(app, ctx);
        registerInsightsCommands(app, ctx);
        registerStatusCommands(app, ctx);
    });
}

// `command` (with --json when `json`) on the recorded machine `name`, with a data folder of its own.
class DockerCommand : public ::testing::Test {
protected:
    clitest::Outcome on(const std::string& name, std::vector<std::string> words) const {
        words.insert(words.end(), {"--replay", machine(name), "--data-dir", data_.path()});
        return velmora(words);
    }
    std::vector<std::string> insightIDs(const std::string& name, std::vector<std::string> words = {"insights"}) const {
        words.insert(words.begin(), "--json");
        const auto outcome = on(name, words);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        std::vector<std::string> ids;
        const Json document = Json::parse(outcome.out);
        for (const auto& insight : document.at("insights")) ids.push_back(insight.at("id"));
        return ids;
    }
    clitest::TemporaryFolder data_;
};

}  // namespace

// What a person reads for each recorded engine, in one reviewed file: the running one's engine,
// disk image on another volume, projects, databases, binds and the engine's reclaimable figure
// (never pruned); the stopped one's disk image still measured; the native Linux engine's data
// folder, said once.
TEST_F(DockerCommand, TextOutputsMatchTheReviewedCopy) {
    Json rendered = Json::object();
    for (const char* name : {"mac-docker-running", "mac-docker-stopped", "linux-docker-engine"}) {
        const auto outcome = on(name, {"docker"});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        rendered[name] = clitest::outputLines(outcome.out, machine(name));
    }
    testing::expectGolden("cli/docker-outputs.json", rendered);
}

TEST_F(DockerCommand, JSONIsTheInventoryWithItsViewsAndAMissingProgramIsAFact) {
    const auto document = Json::parse(on("mac-docker-running", {"--json", "docker"}).out);
    EXPECT_EQ(document.at("executable"), "/usr/local/bin/docker");
    EXPECT_EQ(document.at("inventory").at("serverVersion"), "27.3.1");
    EXPECT_EQ(document.at("projectUsage").at(0).at("name"), "legacy");
    EXPECT_EQ(document.at("databases").size(), 3u);
    EXPECT_EQ(document.at("bindMounts").size(), 2u);

    EXPECT_EQ(on("macbook-air-m2", {"docker"}).out, "Docker CLI not found\n");
    const auto missing = on("macbook-air-m2", {"--json", "docker"});
    EXPECT_EQ(missing.status, 0);
    EXPECT_EQ(Json::parse(missing.out), Json({{"installed", false}}));
}

TEST_F(DockerCommand, InsightsRankTheRecordedEnginesAndTheThresholdIsPassedOn) {
    EXPECT_THAT(insightIDs("mac-docker-stopped"), ElementsAre("docker.move", "space.scan"));
    EXPECT_THAT(insightIDs("mac-docker-running"), ElementsAre("docker.reclaimable", "space.scan"));
    // The engine reports 6,253,002,290 reclaimable bytes, one less than this threshold.
    EXPECT_THAT(insightIDs("mac-docker-running", {"insights", "--min-bytes", "6253002291"}), ElementsAre("space.scan"));

    const auto human = on("mac-docker-running", {"insights"});
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_THAT(human.out,
                AllOf(HasSubstr("Docker reports 6.25 GB reclaimable"),
                      HasSubstr("Risk: Protected · Action: Review → Docker"), HasSubstr("No scan summary yet")));
    for (const char* bad : {"-1", "lots"})
        EXPECT_TRUE(clitest::failsWith(on("mac-docker-running", {"insights", "--min-bytes", bad}), 2, "--min-bytes"));
}

TEST_F(DockerCommand, InsightsReadTheLastScanSummaryFromTheDataFolder) {
    SpaceSummary summary;
    summary.root = "/Users/sam";
    summary.scannedAt = *ISO8601::parse("2026-11-01T08:00:00Z");
    SpaceNode photos;
    photos.path = "/Users/sam/Pictures/Photos Library.photoslibrary";
    photos.name = "Photos Library.photoslibrary";
    photos.allocatedBytes = photos.exclusiveBytes = 80000000000;
    summary.topConsumers = {photos};
    summary.credentialsInTrash = {"/Users/sam/.Trash/id_rsa"};
    summary.save(data_.path());
    EXPECT_THAT(insightIDs("mac-docker-stopped"),
                AllOf(Contains("safety.trash.credentials"), Contains("space.big." + photos.path)));
    EXPECT_THAT(on("mac-docker-stopped", {"insights"}).out,
                HasSubstr("Space suggestions from the scan of /Users/sam at 2026-11-01T08:00:00Z."));

    // A scan of a folder outside the recorded home was made on this machine, not on the recording.
    summary.root = "/work/elsewhere";
    summary.save(data_.path());
    const auto foreign = on("mac-docker-stopped", {"insights"});
    EXPECT_THAT(foreign.out, AllOf(HasSubstr("Last scan summary ignored: it covers /work/elsewhere"),
                                   Not(HasSubstr("Photos Library"))));

    AtomicFile::write(std::filesystem::path(data_.path()) / SpaceSummary::fileName, "{broken");
    const auto broken = on("mac-docker-stopped", {"insights"});
    EXPECT_EQ(broken.status, 0);
    EXPECT_THAT(broken.out, AllOf(HasSubstr("! Last scan summary ignored: "), HasSubstr("No storage analysis yet")));
}

TEST_F(DockerCommand, StatusShowsTopInsightsAfterTheHealthLinesAndInItsJSON) {
    const auto human = on("mac-docker-stopped", {"status"});
    ASSERT_EQ(human.status, 0) << human.err;
    const auto insights = human.out.find("Insights\n");
    ASSERT_NE(insights, std::string::npos);
    EXPECT_LT(human.out.find("Health\n"), insights);
    EXPECT_THAT(human.out.substr(insights), HasSubstr("Docker's disk image uses 41.88 GB on the internal SSD"));
    EXPECT_THAT(insightIDs("mac-docker-stopped", {"status"}), ElementsAre("docker.move", "space.scan"));
}

}  // namespace corvel::cli
