#include "insights/InsightEngine.h"

#include "diagnostics/DiagnosticEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace corvel {
namespace {

using InsightEngine::Input;
using Kind = Insight::Kind;
using Destination = Insight::Destination;

constexpr std::int64_t GB = 1000000000;
constexpr std::int64_t minimum = InsightEngine::defaultMinimumBytes;

StorageVolume volume(std::string id, std::string mountPoint, std::int64_t total, std::int64_t available, bool internal,
                     std::string type = "apfs") {
    StorageVolume result;
    result.id = id;
    result.name = id;
    result.mountPoint = std::move(mountPoint);
    result.totalBytes = total;
    result.availableBytes = available;
    result.isInternal = internal;
    result.fileSystemType = std::move(type);
    return result;
}

SpaceNode consumer(std::string path, std::int64_t allocated, CleanupRisk risk, std::int64_t exclusive = -1) {
    SpaceNode node;
    node.name = path.substr(path.rfind('/') + 1);
    node.path = std::move(path);
    node.isDirectory = true;
    node.allocatedBytes = allocated;
    node.exclusiveBytes = exclusive < 0 ? allocated : exclusive;
    node.classification.risk = risk;
    node.classification.rationale = "Because.";
    return node;
}

// An input with one analysed consumer too small for any space rule, so that "space.scan" stays quiet.
Input analysed() {
    Input input;
    input.topConsumers = {consumer("/Users/me/tiny", 1000, CleanupRisk::gray)};
    return input;
}

std::vector<std::string> ids(const std::vector<Insight>& insights) {
    std::vector<std::string> result;
    for (const auto& insight : insights) result.push_back(insight.id);
    return result;
}

const Insight* find(const std::vector<Insight>& insights, const std::string& id) {
    const auto found = std::find_if(insights.begin(), insights.end(), [&](const Insight& i) { return i.id == id; });
    return found == insights.end() ? nullptr : &*found;
}

TEST(InsightsWithNothingKnown, OnlySuggestAnAnalysis) {
    const auto insights = InsightEngine::insights(Input{}, minimum);
    ASSERT_EQ(insights.size(), 1u);
    EXPECT_EQ(insights[0], (Insight{"space.scan", Kind::space, Severity::info, "No storage analysis yet",
                                    "Run the analyzer to rank what uses your disk, counting APFS clones correctly.",
                                    std::nullopt, std::nullopt, Destination::space, "Analyze"}));
    // Even a zero threshold does not turn nothing into suggestions.
    EXPECT_EQ(InsightEngine::insights(Input{}, 0).size(), 1u);
}

TEST(InsightBootFree, FollowsTheBootVolumesFreeSpaceFinding) {
    Input input;
    input.snapshot.volumes = {volume("data", "/System/Volumes/Data", 1000 * GB, 100 * GB, true),
                              volume("boot", "/", 1000 * GB, 25 * GB, true)};
    input.snapshot.volumes[1].isBootVolume = true;
    input.report = DiagnosticEngine().evaluate(input.snapshot);

    auto insights = InsightEngine::insights(input, minimum);
    const auto* boot = find(insights, "boot.free");
    ASSERT_NE(boot, nullptr);
    EXPECT_EQ(*boot, (Insight{"boot.free", Kind::space, Severity::critical, "Internal SSD is 98% full",
                              "25 GB free of 1 TB. Find what is really using it before deleting anything.", 975 * GB,
                              std::nullopt, Destination::space, "Analyze"}));
    EXPECT_EQ(insights.front().id, "boot.free");  // critical first

    input.topConsumers = {consumer("/Users/me/Movies", 500 * GB, CleanupRisk::red)};
    insights = InsightEngine::insights(input, minimum);
    boot = find(insights, "boot.free");
    ASSERT_NE(boot, nullptr);
    EXPECT_EQ(boot->destination, Destination::cleanup);
    EXPECT_EQ(boot->actionTitle, "Review");
}

TEST(InsightBootFree, OtherVolumesAndHealthyBootVolumesDoNotFire) {
    Input input = analysed();
    input.snapshot.volumes = {volume("boot", "/", 1000 * GB, 500 * GB, true),
                              volume("full", "/Volumes/X", 100 * GB, 1 * GB, false)};
    input.snapshot.volumes[0].isBootVolume = true;
    input.report = DiagnosticEngine().evaluate(input.snapshot);
    ASSERT_FALSE(input.report.findings.empty());  // the other volume has its finding
    EXPECT_EQ(find(InsightEngine::insights(input, minimum), "boot.free"), nullptr);
}

TEST(InsightCredentials, CountFilesAndTheirFolders) {
    Input input = analysed();
    input.credentialsInTrash = {"/Users/me/.Trash/old/id_rsa", "/Users/me/.Trash/old/.env",
                                "/Users/me/.Trash/keys.p12"};
    const auto insights = InsightEngine::insights(input, minimum);
    ASSERT_EQ(insights.size(), 1u);
    EXPECT_EQ(insights[0],
              (Insight{"safety.trash.credentials", Kind::safety, Severity::warning,
                       "3 credential-like files are in the Trash",
                       "Found by name in 2 folder(s) (passwords, keys, secrets). Emptying the Trash destroys them; "
                       "recover any you still use first. Contents were not read.",
                       std::nullopt, CleanupRisk::red, Destination::cleanup, "Review"}));
}

TEST(InsightReviewable, SumsGreenAndYellowFromTheThresholdOn) {
    Input input;
    input.topConsumers = {consumer("/a/Movies", 5 * GB, CleanupRisk::red),
                          consumer("/a/DerivedData", 400 * 1000000, CleanupRisk::green),
                          consumer("/a/unknown", 2 * GB, CleanupRisk::gray),
                          consumer("/a/node_modules", 350 * 1000000, CleanupRisk::yellow),
                          consumer("/a/pip", 150 * 1000000, CleanupRisk::green),
                          consumer("/a/npm", 100 * 1000000, CleanupRisk::green)};
    auto insights = InsightEngine::insights(input, minimum);
    const auto* reviewable = find(insights, "space.reviewable");
    ASSERT_NE(reviewable, nullptr);
    EXPECT_EQ(*reviewable,
              (Insight{"space.reviewable", Kind::space, Severity::warning, "1 GB could be reclaimed after review",
                       "GREEN and YELLOW items such as DerivedData, node_modules, pip. Simulate first; "
                       "nothing is deleted automatically.",
                       1 * GB, CleanupRisk::yellow, Destination::cleanup, "Simulate"}));

    EXPECT_EQ(find(InsightEngine::insights(input, GB + 1), "space.reviewable"), nullptr);
    input.topConsumers.resize(2);
    insights = InsightEngine::insights(input, 1);
    ASSERT_NE(find(insights, "space.reviewable"), nullptr);
    EXPECT_EQ(find(insights, "space.reviewable")->detail,
              "GREEN and YELLOW items such as DerivedData. Simulate first; nothing is deleted automatically.");
}

TEST(InsightBigItems, AtMostEightRedOrGrayItemsFromTheThresholdOn) {
    Input input;
    input.topConsumers.push_back(consumer("/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw",
                                          42 * GB, CleanupRisk::red));
    input.topConsumers.push_back(consumer("/Users/me/Caches", 30 * GB, CleanupRisk::green));
    for (int i = 0; i < 9; ++i)
        input.topConsumers.push_back(consumer("/Users/me/big" + std::to_string(i), 20 * GB, CleanupRisk::gray));
    input.topConsumers.push_back(consumer("/Users/me/small", GB - 1, CleanupRisk::red));

    const auto insights = InsightEngine::insights(input, minimum);
    std::vector<std::string> big;
    for (const auto& insight : insights)
        if (insight.id.starts_with("space.big.")) big.push_back(insight.id);
    ASSERT_EQ(big.size(), 8u);
    EXPECT_EQ(big[0], "space.big./Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw");
    EXPECT_EQ(std::count(big.begin(), big.end(), "space.big./Users/me/big7"), 0);  // the ninth is over the limit
    const auto* docker = find(insights, big[0]);
    EXPECT_EQ(docker->title, "Docker.raw uses 42 GB in /Users/me/Library/Containers/com.docker.docker/Data/vms/0/data");
    EXPECT_EQ(docker->detail,
              "Because. Databases, Docker volumes, credentials, personal data, files in use or without "
              "backup. Never offered for cleanup.");
    EXPECT_EQ(docker->kind, Kind::safety);
    EXPECT_EQ(docker->severity, Severity::info);
    EXPECT_EQ(docker->risk, CleanupRisk::red);
    EXPECT_EQ(docker->destination, Destination::space);
    EXPECT_EQ(docker->actionTitle, "Inspect");
    EXPECT_EQ(find(insights, "space.big./Users/me/big1")->risk, CleanupRisk::gray);
}

TEST(InsightClones, FireFromTwiceTheThreshold) {
    Input input;
    input.topConsumers = {consumer("/a/one", 3 * GB, CleanupRisk::gray, 2 * GB),
                          consumer("/a/two", 2 * GB, CleanupRisk::gray, GB)};
    const auto insights = InsightEngine::insights(input, minimum);
    const auto* clones = find(insights, "space.clones");
    ASSERT_NE(clones, nullptr);
    EXPECT_EQ(*clones, (Insight{"space.clones", Kind::space, Severity::info, "2 GB are shared APFS clones",
                                "Tools that add up file sizes (du, many cleaners) count this space twice. Deleting "
                                "clones frees almost nothing.",
                                2 * GB, std::nullopt, Destination::space, "Learn more"}));
    EXPECT_EQ(find(InsightEngine::insights(input, GB + 1), "space.clones"), nullptr);
    // A threshold whose double overflows simply never fires.
    EXPECT_EQ(find(InsightEngine::insights(input, std::numeric_limits<std::int64_t>::max()), "space.clones"), nullptr);
}

DockerInventory dockerWithReclaimable(std::int64_t bytes) {
    DockerInventory inventory;
    inventory.serverVersion = "27.3.1";
    inventory.diskUsage = {{"Images", 3, 1, 5 * GB, bytes - 10}, {"Build Cache", 2, 0, 10, 10}};
    return inventory;
}

TEST(InsightDockerReclaimable, FiresFromTheThresholdOn) {
    Input input = analysed();
    input.docker = dockerWithReclaimable(minimum - 1);
    EXPECT_EQ(find(InsightEngine::insights(input, minimum), "docker.reclaimable"), nullptr);
    input.docker = dockerWithReclaimable(minimum);
    const auto insights = InsightEngine::insights(input, minimum);
    const auto* insight = find(insights, "docker.reclaimable");
    ASSERT_NE(insight, nullptr);
    EXPECT_EQ(*insight, (Insight{"docker.reclaimable", Kind::docker, Severity::info, "Docker reports 1 GB reclaimable",
                                 "Unused images and stopped containers. Review them in Docker; Velmora never prunes.",
                                 minimum, CleanupRisk::red, Destination::docker, "Review"}));
    input.docker.reset();
    EXPECT_EQ(find(InsightEngine::insights(input, minimum), "docker.reclaimable"), nullptr);
}

class InsightDockerMove : public ::testing::Test {
protected:
    void SetUp() override {
        input = analysed();
        input.snapshot.volumes = {volume("boot", "/", 1000 * GB, 300 * GB, true),
                                  volume("data", "/System/Volumes/Data", 1000 * GB, 300 * GB, true),
                                  volume("work", "/Volumes/Work", 2000 * GB, 50 * GB, false)};
        DockerInventory inventory = DockerInventory::empty();
        inventory.diskImage =
            DockerDiskImage{"/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw", 68 * GB,
                            42 * GB, "/System/Volumes/Data", "Docker Desktop default location"};
        input.docker = inventory;
    }

    const Insight* move() {
        result = InsightEngine::insights(input, minimum);
        return find(result, "docker.move");
    }

    Input input;
    std::vector<Insight> result;
};

TEST_F(InsightDockerMove, InternalImageAndAnExternalAPFSVolumeWithRoom) {
    const auto* insight = move();
    ASSERT_NE(insight, nullptr);
    EXPECT_EQ(
        *insight,
        (Insight{"docker.move", Kind::migration, Severity::info, "Docker's disk image uses 42 GB on the internal SSD",
                 "An external APFS volume has room for it. Plan the move with Docker Desktop's own setting.", 42 * GB,
                 std::nullopt, Destination::docker, "Plan move"}));
    // Without the locator's mount point the path finds its volume by prefix.
    input.docker->diskImage->volumeMountPoint.reset();
    EXPECT_NE(move(), nullptr);
}

TEST_F(InsightDockerMove, NoRoomNoAPFSOrAlreadyExternalDoNotFire) {
    input.snapshot.volumes[2].availableBytes = 42 * GB - 1;
    EXPECT_EQ(move(), nullptr);
    input.snapshot.volumes[2].availableBytes = 500 * GB;
    input.snapshot.volumes[2].fileSystemType = "exfat";
    EXPECT_EQ(move(), nullptr);
    input.snapshot.volumes[2].fileSystemType = "apfs";
    input.snapshot.volumes[2].isReadOnly = true;
    EXPECT_EQ(move(), nullptr);
    input.snapshot.volumes[2].isReadOnly = false;
    input.docker->diskImage->path = "/Volumes/Work/Docker/Docker.raw";
    input.docker->diskImage->volumeMountPoint = "/Volumes/Work";
    EXPECT_EQ(move(), nullptr);
    input.docker->diskImage.reset();
    EXPECT_EQ(move(), nullptr);
}

TEST(InsightMigrations, OnePerVerifiedMigrationWithBytes) {
    Input input = analysed();
    input.verifiedMigrations = {{"/Users/me/Developer", 5 * GB}, {"/Users/me/empty", 0}};
    const auto insights = InsightEngine::insights(input, minimum);
    ASSERT_EQ(insights.size(), 1u);
    EXPECT_EQ(insights[0], (Insight{"migration./Users/me/Developer", Kind::migration, Severity::info,
                                    "/Users/me/Developer is verified on the SSD",
                                    "Checksums match. A reviewed path swap could free 5 GB on the internal SSD; the "
                                    "original is kept until you decide.",
                                    5 * GB, std::nullopt, Destination::migration, "Swap plan"}));
}

TEST(InsightSlowLinks, WarningAndCriticalTopologyFindingsOnly) {
    Input input = analysed();
    DeviceTopology topology;
    topology.diskID = "disk4";
    topology.findings = {
        Finding::make("topology.linkSpeed", Severity::warning, FindingSubject::disk("disk4"), "T7", "USB 2 link",
                      "Slow."),
        Finding::make("topology.shared", Severity::info, FindingSubject::disk("disk4"), "T7", "Shared hub", "Shared."),
    };
    input.topologies = {topology};
    const auto insights = InsightEngine::insights(input, minimum);
    ASSERT_EQ(insights.size(), 1u);
    EXPECT_TRUE(insights[0].id.starts_with("topology"));
    EXPECT_EQ(insights[0].kind, Kind::performance);
    EXPECT_EQ(insights[0].severity, Severity::warning);
    EXPECT_EQ(insights[0].title, "USB 2 link");
    EXPECT_EQ(insights[0].detail, "Slow.");
    EXPECT_EQ(insights[0].destination, Destination::topology);
    EXPECT_EQ(insights[0].actionTitle, "See path");
}

PhysicalDisk disk(std::string id, SMARTStatus smart, std::optional<std::int64_t> wear) {
    PhysicalDisk result;
    result.id = std::move(id);
    result.mediaName = "APPLE SSD AP1024Z Media";
    result.smartStatus = smart;
    if (wear) {
        result.nvme = NVMeHealth{};
        result.nvme->percentageUsed = wear;
    }
    return result;
}

TEST(InsightDriveHealth, FailingSmartOrWearFromEightyWhateverTheThreshold) {
    Input input = analysed();
    input.snapshot.disks = {disk("disk0", SMARTStatus::verified, 85), disk("disk1", SMARTStatus::verified, 79),
                            disk("disk2", SMARTStatus::failing, std::nullopt),
                            disk("disk3", SMARTStatus::verified, 80)};
    DiagnosticThresholds raised = DiagnosticThresholds::standard();
    raised.nvmeWearWarningPercent = 90;
    input.report = DiagnosticEngine(raised).evaluate(input.snapshot);
    const auto insights = InsightEngine::insights(input, minimum);
    EXPECT_EQ(ids(insights),
              (std::vector<std::string>{"health.drive.disk0", "health.drive.disk2", "health.drive.disk3"}));
    EXPECT_EQ(insights[0],
              (Insight{"health.drive.disk0", Kind::health, Severity::critical, "APPLE SSD AP1024Z needs attention",
                       "The drive reports a health problem. Back it up first.", std::nullopt, std::nullopt,
                       Destination::health, "Details"}));
}

TEST(InsightOrdering, SeverityFirstThenBytesThenRuleOrder) {
    Input input;  // no consumers: "space.scan" (info, no bytes) is collected before the migrations
    input.verifiedMigrations = {{"/small", 5 * GB}, {"/large", 50 * GB}, {"/same", 5 * GB}};
    input.credentialsInTrash = {"/Users/me/.Trash/id_ed25519"};
    input.snapshot.disks = {disk("disk9", SMARTStatus::failing, std::nullopt)};
    input.topConsumers = {};
    const auto insights = InsightEngine::insights(input, minimum);
    EXPECT_EQ(ids(insights),
              (std::vector<std::string>{"health.drive.disk9", "safety.trash.credentials", "migration./large",
                                        "migration./small", "migration./same", "space.scan"}));
}

TEST(InsightOrdering, CriticalHealthBeatsAnyWarningSpaceInsight) {
    Input input;
    input.topConsumers = {consumer("/huge", 900 * GB, CleanupRisk::green)};
    input.snapshot.disks = {disk("disk0", SMARTStatus::failing, std::nullopt)};
    const auto insights = InsightEngine::insights(input, minimum);
    ASSERT_GE(insights.size(), 2u);
    EXPECT_EQ(insights[0].id, "health.drive.disk0");
    EXPECT_EQ(insights[1].id, "space.reviewable");
    EXPECT_EQ(insights[1].severity, Severity::warning);
}

TEST(InsightJson, FieldNamesRawValuesAndRoundTrip) {
    const Insight insight{"docker.reclaimable",        Kind::docker, Severity::info, "T", "D", 5, CleanupRisk::red,
                          Destination::diskOperations, "Review"};
    const Json json = insight;
    EXPECT_EQ(
        json.dump(),
        R"j({"id":"docker.reclaimable","kind":"docker","severity":1,"title":"T","detail":"D","bytes":5,"risk":"red","destination":"diskOperations","actionTitle":"Review"})j");
    EXPECT_EQ(json.get<Insight>(), insight);
    Insight bare = insight;
    bare.bytes.reset();
    bare.risk.reset();
    const Json bareJson = bare;
    EXPECT_FALSE(bareJson.contains("bytes"));
    EXPECT_FALSE(bareJson.contains("risk"));
    EXPECT_EQ(bareJson.get<Insight>(), bare);
    Json unknown = json;
    unknown["destination"] = "settings";
    EXPECT_THROW(unknown.get<Insight>(), DecodingError);

    std::vector<std::string> kinds, destinations;
    for (auto kind : allCases<Insight::Kind>()) kinds.emplace_back(rawValue(kind));
    for (auto destination : allCases<Insight::Destination>()) destinations.emplace_back(rawValue(destination));
    EXPECT_EQ(kinds, (std::vector<std::string>{"space", "safety", "performance", "health", "migration", "docker"}));
    EXPECT_EQ(destinations, (std::vector<std::string>{"space", "cleanup", "topology", "docker", "migration", "health",
                                                      "diskOperations"}));
}

}  // namespace
}  // namespace corvel
