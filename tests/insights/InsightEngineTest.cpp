#include "insights/InsightEngine.h"

#include "diagnostics/DiagnosticEngine.h"
#include "support/Golden.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace corvel {
namespace {

using InsightEngine::Input;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Field;
using ::testing::Not;

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

template <class Change>
Input with(Input input, Change change) {
    change(input);
    return input;
}

// `base()` changed by `change`, built when the row runs.
template <class Change>
std::function<Input()> changed(Input (*base)(), Change change) {
    return [base, change] { return with(base(), change); };
}

// An input with one analysed consumer too small for any space rule, so that "space.scan" stays quiet.
Input analysed() {
    Input input;
    input.topConsumers = {consumer("/Users/me/tiny", 1000, CleanupRisk::gray)};
    return input;
}

Input bootVolume(std::int64_t available) {
    Input input;
    input.snapshot.volumes = {volume("data", "/System/Volumes/Data", 1000 * GB, 100 * GB, true),
                              volume("boot", "/", 1000 * GB, available, true)};
    input.snapshot.volumes[1].isBootVolume = true;
    input.report = DiagnosticEngine().evaluate(input.snapshot);
    return input;
}

Input reviewable() {
    Input input;
    input.topConsumers = {consumer("/a/Movies", 5 * GB, CleanupRisk::red),
                          consumer("/a/DerivedData", 400 * 1000000, CleanupRisk::green),
                          consumer("/a/unknown", 2 * GB, CleanupRisk::gray),
                          consumer("/a/node_modules", 350 * 1000000, CleanupRisk::yellow),
                          consumer("/a/pip", 150 * 1000000, CleanupRisk::green),
                          consumer("/a/npm", 100 * 1000000, CleanupRisk::green)};
    return input;
}

Input clones() {
    Input input;
    input.topConsumers = {consumer("/a/one", 3 * GB, CleanupRisk::gray, 2 * GB),
                          consumer("/a/two", 2 * GB, CleanupRisk::gray, GB)};
    return input;
}

Input dockerReclaimable(std::int64_t bytes) {
    Input input = analysed();
    DockerInventory inventory;
    inventory.serverVersion = "27.3.1";
    inventory.diskUsage = {{"Images", 3, 1, 5 * GB, bytes - 10}, {"Build Cache", 2, 0, 10, 10}};
    input.docker = inventory;
    return input;
}

// Docker's disk image on the internal data volume, and an external APFS volume with room for it.
Input dockerImage() {
    Input input = analysed();
    input.snapshot.volumes = {volume("boot", "/", 1000 * GB, 300 * GB, true),
                              volume("data", "/System/Volumes/Data", 1000 * GB, 300 * GB, true),
                              volume("work", "/Volumes/Work", 2000 * GB, 50 * GB, false)};
    DockerInventory inventory = DockerInventory::empty();
    inventory.diskImage = DockerDiskImage{"/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw",
                                          68 * GB, 42 * GB, "/System/Volumes/Data", "Docker Desktop default location"};
    input.docker = inventory;
    return input;
}

// The image found by the longest mount point holding its path (the locator named none).
Input dockerImageAt(std::string path) {
    return with(dockerImage(), [&](Input& in) {
        in.docker->diskImage->path = std::move(path);
        in.docker->diskImage->volumeMountPoint.reset();
    });
}

Input topologyFinding(Severity severity) {
    Input input = analysed();
    DeviceTopology topology;
    topology.diskID = "disk4";
    topology.findings = {
        Finding::make("topology.linkSpeed", severity, FindingSubject::disk("disk4"), "T7", "USB 2 link", "Slow.")};
    input.topologies = {topology};
    return input;
}

Input drive(SMARTStatus smart, std::optional<std::int64_t> wear) {
    Input input = analysed();
    input.snapshot.disks = {disk("disk0", smart, wear)};
    // A raised wear threshold does not move the insight's own limit of 80 %.
    DiagnosticThresholds raised = DiagnosticThresholds::standard();
    raised.nvmeWearWarningPercent = 90;
    input.report = DiagnosticEngine(raised).evaluate(input.snapshot);
    return input;
}

// One row per boundary: the input, the threshold, the insight, and its severity (none: absent).
Input snapshotShare(std::int64_t bytes) {
    return with(analysed(), [bytes](Input& i) { i.snapshotShares = {{"/", SnapshotKind::btrfs, 3, bytes, 510 * GB}}; });
}

struct Row {
    const char* what;
    std::function<Input()> input;
    std::int64_t minimumBytes;
    std::string id;
    std::optional<Severity> severity;
};

TEST(InsightEngine, RulesFireAtTheirBoundaries) {
    using S = Severity;
    const std::optional<Severity> quiet;  // the insight must be absent
    const auto withItem = [](std::string path, std::int64_t bytes) {
        return changed(analysed, [=](Input& i) { i.topConsumers.push_back(consumer(path, bytes, CleanupRisk::red)); });
    };
    const auto withMigration = [](std::int64_t bytes) {
        return changed(analysed, [=](Input& i) { i.verifiedMigrations = {{"/m", bytes}}; });
    };
    const std::vector<Row> rows{
        {"nothing known", [] { return Input{}; }, minimum, "space.scan", S::info},
        {"nothing known, zero threshold", [] { return Input{}; }, 0, "space.scan", S::info},
        {"analysed", analysed, minimum, "space.scan", quiet},
        {"boot volume 97.5 % full", [] { return bootVolume(25 * GB); }, minimum, "boot.free", S::critical},
        {"boot volume half full, another full",
         [] {
             auto in = with(bootVolume(500 * GB), [](Input& i) {
                 i.snapshot.volumes.push_back(volume("full", "/Volumes/X", 100 * GB, 1 * GB, false));
             });
             in.report = DiagnosticEngine().evaluate(in.snapshot);
             return in;
         },
         minimum, "boot.free", quiet},
        {"reviewable 1 GB", reviewable, minimum, "space.reviewable", S::warning},
        {"reviewable 1 GB, threshold 1 GB + 1", reviewable, GB + 1, "space.reviewable", quiet},
        {"only protected items", changed(reviewable, [](Input& i) { i.topConsumers.resize(1); }), 0, "space.reviewable",
         quiet},
        {"big item at the threshold", withItem("/Users/me/big", minimum), minimum, "space.big./Users/me/big", S::info},
        {"big item one byte short", withItem("/Users/me/big", minimum - 1), minimum, "space.big./Users/me/big", quiet},
        {"empty item, zero threshold", withItem("/Users/me/empty", 0), 0, "space.big./Users/me/empty", quiet},
        {"clones twice the threshold", clones, minimum, "space.clones", S::info},
        {"clones below twice the threshold", clones, GB + 1, "space.clones", quiet},
        {"clones, threshold whose double overflows", clones, std::numeric_limits<std::int64_t>::max(), "space.clones",
         quiet},
        {"Docker reclaimable at the threshold", [] { return dockerReclaimable(minimum); }, minimum,
         "docker.reclaimable", S::info},
        {"Docker reclaimable one byte short", [] { return dockerReclaimable(minimum - 1); }, minimum,
         "docker.reclaimable", quiet},
        {"Docker reclaims nothing, zero threshold", [] { return dockerReclaimable(0); }, 0, "docker.reclaimable",
         quiet},
        {"Docker image inside", dockerImage, minimum, "docker.move", S::info},
        {"Docker image found by prefix", [] { return dockerImageAt(dockerImage().docker->diskImage->path); }, minimum,
         "docker.move", S::info},
        {"Docker image on the external volume, found by prefix",
         [] { return dockerImageAt("/Volumes/Work/Docker/Docker.raw"); }, minimum, "docker.move", quiet},
        {"Docker image beside the external volume's mount point",
         [] { return dockerImageAt("/Volumes/WorkOld/Docker.raw"); }, minimum, "docker.move", S::info},
        {"Docker image named by the locator on the external volume",
         changed(dockerImage,
                 [](Input& i) {
                     i.docker->diskImage->path = "/Volumes/Work/Docker/Docker.raw";
                     i.docker->diskImage->volumeMountPoint = "/Volumes/Work";
                 }),
         minimum, "docker.move", quiet},
        {"0-byte Docker image", changed(dockerImage, [](Input& i) { i.docker->diskImage->allocatedBytes = 0; }),
         minimum, "docker.move", quiet},
        {"no room outside", changed(dockerImage, [](Input& i) { i.snapshot.volumes[2].availableBytes = 42 * GB - 1; }),
         minimum, "docker.move", quiet},
        {"room exactly", changed(dockerImage, [](Input& i) { i.snapshot.volumes[2].availableBytes = 42 * GB; }),
         minimum, "docker.move", S::info},
        {"room on exFAT only", changed(dockerImage, [](Input& i) { i.snapshot.volumes[2].fileSystemType = "exfat"; }),
         minimum, "docker.move", quiet},
        {"room on a read-only volume only",
         changed(dockerImage, [](Input& i) { i.snapshot.volumes[2].isReadOnly = true; }), minimum, "docker.move",
         quiet},
        {"room on a network volume only",
         changed(dockerImage, [](Input& i) { i.snapshot.volumes[2].isNetwork = true; }), minimum, "docker.move", quiet},
        {"no disk image", changed(dockerImage, [](Input& i) { i.docker->diskImage.reset(); }), minimum, "docker.move",
         quiet},
        {"migration of 1 byte", withMigration(1), minimum, "migration./m", S::info},
        {"migration of 0 bytes", withMigration(0), minimum, "migration./m", quiet},
        {"slow link warning", [] { return topologyFinding(S::warning); }, minimum, "topology.linkSpeed|disk:disk4",
         S::warning},
        {"slow link info", [] { return topologyFinding(S::info); }, minimum, "topology.linkSpeed|disk:disk4", quiet},
        {"snapshots at the minimum", [] { return snapshotShare(minimum); }, minimum, "snapshots./", S::info},
        {"snapshots below the minimum", [] { return snapshotShare(minimum - 1); }, minimum, "snapshots./", quiet},
        {"snapshots of 0 bytes", [] { return snapshotShare(0); }, 0, "snapshots./", quiet},
        {"wear 80", [] { return drive(SMARTStatus::verified, 80); }, minimum, "health.drive.disk0", S::critical},
        {"wear 79", [] { return drive(SMARTStatus::verified, 79); }, minimum, "health.drive.disk0", quiet},
        {"failing", [] { return drive(SMARTStatus::failing, std::nullopt); }, minimum, "health.drive.disk0",
         S::critical},
    };
    for (const auto& row : rows) {
        const auto insights = InsightEngine::insights(row.input(), row.minimumBytes);
        if (row.severity)
            EXPECT_THAT(insights,
                        Contains(AllOf(Field(&Insight::id, row.id), Field(&Insight::severity, *row.severity))))
                << row.what;
        else
            EXPECT_THAT(insights, Not(Contains(Field(&Insight::id, row.id)))) << row.what;
    }
}

std::vector<std::string> ids(const std::vector<Insight>& insights) {
    std::vector<std::string> result;
    for (const auto& insight : insights) result.push_back(insight.id);
    return result;
}

TEST(InsightEngine, SeverityFirstThenBytesThenRuleOrder) {
    Input input;  // no consumers: "space.scan" (info, no bytes) is collected before the migrations
    input.verifiedMigrations = {{"/small", 5 * GB}, {"/large", 50 * GB}, {"/same", 5 * GB}};
    input.credentialsInTrash = {"/Users/me/.Trash/id_ed25519"};
    input.snapshot.disks = {disk("disk9", SMARTStatus::failing, std::nullopt)};
    EXPECT_THAT(ids(InsightEngine::insights(input, minimum)),
                ElementsAre("health.drive.disk9", "safety.trash.credentials", "migration./large", "migration./small",
                            "migration./same", "space.scan"));

    // Linux has no APFS: the same insight speaks of its reflinked copies.
    input.platform = Platform::linux;
    const auto onLinux = InsightEngine::insights(input, minimum);
    EXPECT_THAT(onLinux.back().detail, HasSubstr("counting reflinked copies correctly"));
}

TEST(InsightEngine, AtMostEightBigItemsInConsumerOrder) {
    Input input;
    input.topConsumers.push_back(consumer("/Users/me/Caches", 30 * GB, CleanupRisk::green));
    for (int i = 0; i < 9; ++i)
        input.topConsumers.push_back(consumer("/Users/me/big" + std::to_string(i), 20 * GB, CleanupRisk::gray));
    std::vector<std::string> big;
    for (const auto& id : ids(InsightEngine::insights(input, minimum)))
        if (id.starts_with("space.big.")) big.push_back(id);
    EXPECT_THAT(big, ElementsAre("space.big./Users/me/big0", "space.big./Users/me/big1", "space.big./Users/me/big2",
                                 "space.big./Users/me/big3", "space.big./Users/me/big4", "space.big./Users/me/big5",
                                 "space.big./Users/me/big6", "space.big./Users/me/big7"));
}

// Each rule fires at least once below; the golden file holds every insight's texts, figures,
// destinations and order.
TEST(InsightEngine, EveryInsightMatchesTheReviewedCopy) {
    Input everything = dockerImage();
    everything.snapshot.volumes[0].availableBytes = 25 * GB;
    everything.snapshot.volumes[0].isBootVolume = true;
    everything.snapshot.disks = {disk("disk0", SMARTStatus::verified, 85), disk("disk2", SMARTStatus::failing, {})};
    everything.report = DiagnosticEngine().evaluate(everything.snapshot);
    everything.topologies = topologyFinding(Severity::warning).topologies;
    everything.docker->diskUsage = dockerReclaimable(minimum).docker->diskUsage;
    everything.topConsumers = reviewable().topConsumers;
    for (const auto& node : clones().topConsumers) everything.topConsumers.push_back(node);
    everything.topConsumers.push_back(consumer(
        "/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw", 42 * GB, CleanupRisk::red));
    everything.topConsumers.push_back(consumer("/data", 3 * GB, CleanupRisk::gray));  // directly under "/"
    everything.verifiedMigrations = {{"/Users/me/Developer", 5 * GB}};
    everything.snapshotShares = {{"/", SnapshotKind::btrfs, 3, 62 * GB, 510 * GB},
                                 {"/System/Volumes/Data", SnapshotKind::apfs, 1, 4 * GB, 494 * GB}};
    everything.credentialsInTrash = {"/Users/me/.Trash/old/id_rsa", "/Users/me/.Trash/old/.env",
                                     "/Users/me/.Trash/keys.p12"};

    Json rendered = Json::object();
    rendered["everything"] = InsightEngine::insights(everything, minimum);
    rendered["nothing known"] = InsightEngine::insights(Input{}, minimum);
    rendered["boot volume before an analysis"] = InsightEngine::insights(bootVolume(25 * GB), minimum);
    rendered["one reviewable item"] =
        InsightEngine::insights(with(reviewable(), [](Input& i) { i.topConsumers.resize(2); }), 1);
    testing::expectGolden("insights/insights.json", rendered);
}

}  // namespace
}  // namespace corvel
