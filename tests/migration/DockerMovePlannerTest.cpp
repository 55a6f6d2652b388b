// The Docker move planner over plain facts: which blockers each situation raises, and the steps,
// commands and rollback for a native engine's data root and for Docker Desktop's disk image.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "migration/DockerMovePlanner.h"

#include <functional>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::int64_t GB = 1'000'000'000;

StorageVolume volume(std::string mountPoint, std::string type, std::int64_t available) {
    StorageVolume v;
    v.id = mountPoint;
    v.name = "Data";
    v.mountPoint = std::move(mountPoint);
    v.fileSystemType = std::move(type);
    v.availableBytes = available;
    v.totalBytes = 2 * available;
    return v;
}

DockerMoveFacts linuxFacts() {
    DockerMoveFacts facts;
    facts.platform = Platform::linux;
    facts.isInstalled = true;
    facts.dataPath = "/var/lib/docker";
    facts.isDataFolder = true;
    facts.apparentBytes = 14 * GB;
    facts.allocatedBytes = 12 * GB;
    facts.sourceVolume = volume("/", "ext4", 60 * GB);
    facts.target = "/data";
    facts.targetVolume = volume("/data", "xfs", 900 * GB);
    facts.targetState = TargetState::folder;
    facts.isTargetWritable = true;
    facts.home = "/home/me";
    return facts;
}

std::vector<BlockerKind> kinds(const MigrationPlan& plan) {
    std::vector<BlockerKind> result;
    for (const auto& blocker : plan.blockers) result.push_back(blocker.kind);
    return result;
}

TEST(DockerMovePlannerTest, EachSituationRaisesItsBlockers) {
    struct Case {
        const char* name;
        std::function<void(DockerMoveFacts&)> change;
        std::vector<BlockerKind> expected;
    };
    using B = BlockerKind;
    const std::vector<Case> cases = {
        {"a stopped engine and a roomy xfs target", [](DockerMoveFacts&) {}, {}},
        {"engine running", [](DockerMoveFacts& f) { f.isEngineRunning = true; }, {B::engineRunning}},
        {"nothing found", [](DockerMoveFacts& f) { f.dataPath.reset(); }, {B::nothingToMove}},
        {"target missing", [](DockerMoveFacts& f) { f.targetState = TargetState::missing; }, {B::targetMissing}},
        {"target a file", [](DockerMoveFacts& f) { f.targetState = TargetState::notFolder; }, {B::targetNotFolder}},
        {"same volume", [](DockerMoveFacts& f) { f.targetVolume = f.sourceVolume; }, {B::sameVolume}},
        {"read-only mount", [](DockerMoveFacts& f) { f.targetVolume->isReadOnly = true; }, {B::targetReadOnly}},
        {"folder not writable", [](DockerMoveFacts& f) { f.isTargetWritable = false; }, {B::targetReadOnly}},
        {"too small", [](DockerMoveFacts& f) { f.targetVolume->availableBytes = 11 * GB; }, {B::targetTooSmall}},
        {"just enough room", [](DockerMoveFacts& f) { f.targetVolume->availableBytes = 12 * GB; }, {}},
        {"exFAT target",
         [](DockerMoveFacts& f) { f.targetVolume->fileSystemType = "exfat"; },
         {B::unsuitableFileSystem}},
        {"network target", [](DockerMoveFacts& f) { f.targetVolume->isNetwork = true; }, {B::unsuitableFileSystem}},
        {"destination there", [](DockerMoveFacts& f) { f.destinationExists = true; }, {B::destinationExists}},
        {"several at once",
         [](DockerMoveFacts& f) {
             f.isEngineRunning = true;
             f.targetVolume = f.sourceVolume;
             f.targetVolume->availableBytes = 1 * GB;
         },
         {B::engineRunning, B::sameVolume, B::targetTooSmall}},
        // The Mac's sealed system volume is read-only; what lies under it is on the data volume.
        {"a Mac's root",
         [](DockerMoveFacts& f) {
             f.platform = Platform::macos;
             f.isDataFolder = false;
             f.dataPath = "/Volumes/Projects/DockerDesktop/Docker.raw";
             f.sourceVolume = volume("/Volumes/Projects", "apfs", 1000 * GB);
             f.target = "/Users/me/Docker";
             f.targetVolume = volume("/", "apfs", 400 * GB);
             f.targetVolume->isReadOnly = true;
         },
         {}},
    };
    for (const auto& c : cases) {
        auto facts = linuxFacts();
        c.change(facts);
        const auto plan = DockerMovePlanner::plan(facts);
        EXPECT_EQ(kinds(plan), c.expected) << c.name;
        EXPECT_EQ(plan.isReady, c.expected.empty()) << c.name;
    }
}

TEST(DockerMovePlannerTest, ANativeEngineMovesItsDataRootThroughDaemonJson) {
    const auto plan = DockerMovePlanner::plan(linuxFacts());
    EXPECT_EQ(plan.source, "/var/lib/docker");
    EXPECT_EQ(plan.destination, "/data/docker");
    EXPECT_EQ(plan.allocatedBytes, 12 * GB);
    EXPECT_THAT(plan.commands, ElementsAre("sudo systemctl stop docker docker.socket", HasSubstr("mkdir -p"),
                                           "sudo rsync -aHAX --numeric-ids '/var/lib/docker/' '/data/docker/'",
                                           HasSubstr("migrate verify"), HasSubstr("daemon.json.before-move"),
                                           AllOf(HasSubstr("\"data-root\""), HasSubstr("/data/docker")),
                                           "sudo systemctl start docker", HasSubstr("DockerRootDir")));
    EXPECT_THAT(plan.rollback, Contains(HasSubstr("before-move")));
}

TEST(DockerMovePlannerTest, DockerDesktopMovesItsImageAndPointsItsSettingsThere) {
    auto facts = linuxFacts();
    facts.platform = Platform::macos;
    facts.isDataFolder = false;
    facts.dataPath = "/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data/Docker.raw";
    facts.apparentBytes = 1000 * GB;
    facts.target = "/Volumes/Big Disk";
    facts.targetVolume = volume("/Volumes/Big Disk", "apfs", 900 * GB);
    const auto plan = DockerMovePlanner::plan(facts);
    EXPECT_EQ(plan.destination, "/Volumes/Big Disk/DockerDesktop");
    EXPECT_THAT(plan.commands, Contains(HasSubstr("quit app")));
    EXPECT_THAT(plan.commands, Contains("mkdir -p '/Volumes/Big Disk/DockerDesktop'"));
    EXPECT_THAT(plan.commands, Contains(AllOf(HasSubstr("\"DataFolder\""), HasSubstr("group.com.docker"))));
    EXPECT_THAT(plan.commands, Not(Contains(HasSubstr("daemon.json"))));
    EXPECT_THAT(plan.rollback, Contains(HasSubstr("/Users/me/Library/Containers/com.docker.docker/Data/vms/0/data")));
    // The in-app route, and a warning that the image may outgrow the target.
    EXPECT_THAT(plan.notes, Contains(HasSubstr("Disk image location")));
    EXPECT_THAT(plan.notes, Contains(HasSubstr("may grow to 1 TB")));
}

TEST(DockerMovePlannerTest, WithNothingToMoveThereAreNoSteps) {
    auto facts = linuxFacts();
    facts.dataPath.reset();
    facts.isInstalled = false;
    facts.targetState = TargetState::unchecked;
    facts.targetVolume.reset();
    const auto plan = DockerMovePlanner::plan(facts);
    EXPECT_THAT(plan.steps, IsEmpty());
    EXPECT_THAT(plan.commands, IsEmpty());
    EXPECT_THAT(plan.blockers, ElementsAre(::testing::Field(&MigrationBlocker::message, HasSubstr("not installed"))));
    EXPECT_THAT(plan.notes, ElementsAre(HasSubstr("not looked at on disk"), HasSubstr("free space is unknown")));
}

}  // namespace
}  // namespace corvel
