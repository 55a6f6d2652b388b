// The two move planners over plain facts: which blockers each situation raises, the commands a
// person would review (quoted for a shell), the settings that follow the move, and the way back, for
// a workspace, a native Docker engine's data root and Docker Desktop's disk image.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "migration/DockerMovePlanner.h"
#include "migration/MigrationPlanner.h"

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
    v.name = "Work";
    v.mountPoint = std::move(mountPoint);
    v.fileSystemType = std::move(type);
    v.availableBytes = available;
    v.totalBytes = 2 * available;
    return v;
}

// One situation: a change to the base facts and exactly the blockers it must raise.
template <class Facts>
struct BlockerCase {
    const char* name;
    std::function<void(Facts&)> change;
    std::vector<BlockerKind> expected;
};

template <class Facts, class Plan>
void expectBlockers(const Facts& base, const std::vector<BlockerCase<Facts>>& cases, Plan plan) {
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto facts = base;
        c.change(facts);
        const MigrationPlan result = plan(facts);
        std::vector<BlockerKind> kinds;
        for (const auto& blocker : result.blockers) kinds.push_back(blocker.kind);
        EXPECT_EQ(kinds, c.expected);
        EXPECT_EQ(result.isReady, c.expected.empty());
    }
}

MigrationFacts baseFacts() {
    MigrationFacts facts;
    facts.source = "/home/me/ws";
    facts.target = "/mnt/work";
    facts.allocatedBytes = 1 * GB;
    facts.sourceVolume = volume("/", "ext4", 50 * GB);
    facts.targetVolume = volume("/mnt/work", "ext4", 10 * GB);
    return facts;
}

TEST(MigrationPlannerTest, EachSituationRaisesItsBlockers) {
    const std::vector<BlockerCase<MigrationFacts>> cases = {
        {"a roomy ext4 target", [](MigrationFacts&) {}, {}},
        {"target inside the source",
         [](MigrationFacts& f) { f.target = "/home/me/ws/out"; },
         {BlockerKind::overlappingPaths}},
        {"source inside the target", [](MigrationFacts& f) { f.target = "/home"; }, {BlockerKind::overlappingPaths}},
        {"destination already there",
         [](MigrationFacts& f) { f.destinationExists = true; },
         {BlockerKind::destinationExists}},
        {"read-only target",
         [](MigrationFacts& f) { f.targetVolume->isReadOnly = true; },
         {BlockerKind::targetReadOnly}},
        {"one byte too many", [](MigrationFacts& f) { f.allocatedBytes = 10 * GB + 1; }, {BlockerKind::targetTooSmall}},
        {"exactly the free space", [](MigrationFacts& f) { f.allocatedBytes = 10 * GB; }, {}},
        {"case twins onto a volume that ignores case",
         [](MigrationFacts& f) {
             f.scan.caseConflicts = {"/home/me/ws/Makefile"};
             f.targetVolume->supportsCaseSensitiveNames = false;
         },
         {BlockerKind::caseInsensitiveTarget}},
        {"case twins onto a case-sensitive APFS volume",
         [](MigrationFacts& f) {
             f.scan.caseConflicts = {"/home/me/ws/Makefile"};
             f.targetVolume->fileSystemType = "apfs";
             f.targetVolume->supportsCaseSensitiveNames = true;
         },
         {}},
        {"a git repository and case twins onto exFAT",
         [](MigrationFacts& f) {
             f.scan.hasGitRepository = true;
             f.scan.caseConflicts = {"/home/me/ws/Makefile"};
             f.targetVolume->fileSystemType = "exfat";
         },
         {BlockerKind::caseInsensitiveTarget, BlockerKind::unsuitableFileSystem}},
        {"no git repository onto exFAT", [](MigrationFacts& f) { f.targetVolume->fileSystemType = "exfat"; }, {}},
        {"open by a process", [](MigrationFacts& f) { f.openBy = {"vim (pid 42)"}; }, {BlockerKind::sourceInUse}},
    };
    expectBlockers(baseFacts(), cases, MigrationPlanner::plan);
}

TEST(MigrationPlannerTest, CommandsAreQuotedAndPerPlatform) {
    auto facts = baseFacts();
    facts.source = "/home/me/it's ws";
    auto plan = MigrationPlanner::plan(facts);
    EXPECT_EQ(plan.destination, "/mnt/work/it's ws");
    EXPECT_THAT(plan.commands, ElementsAre("rsync -aHAX '/home/me/it'\\''s ws/' '/mnt/work/it'\\''s ws/'",
                                           "velmora migrate verify '/home/me/it'\\''s ws' '/mnt/work/it'\\''s ws'",
                                           "mv '/home/me/it'\\''s ws' '/home/me/it'\\''s ws.before-move'",
                                           "ln -s '/mnt/work/it'\\''s ws' '/home/me/it'\\''s ws'"));
    EXPECT_THAT(plan.rollback,
                Contains("Put the original back: mv '/home/me/it'\\''s ws.before-move' '/home/me/it'\\''s ws'"));
    for (const auto& command : plan.commands) EXPECT_THAT(command, ::testing::Not(HasSubstr("-f")));

    facts.platform = Platform::macos;
    plan = MigrationPlanner::plan(facts);
    EXPECT_EQ(plan.commands.front(), "ditto '/home/me/it'\\''s ws' '/mnt/work/it'\\''s ws'");
}

TEST(MigrationPlannerTest, ProjectRootsInsideTheWorkspaceFollowIt) {
    auto facts = baseFacts();
    facts.projectRoots = {"/home/me/ws/apps", "/home/me/other", "/home/me/ws2"};
    const auto plan = MigrationPlanner::plan(facts);
    EXPECT_THAT(plan.commands,
                Contains("velmora settings set projectRoots '/mnt/work/ws/apps:/home/me/other:/home/me/ws2'"));

    facts.projectRoots = {"/home/me/ws2"};
    EXPECT_THAT(MigrationPlanner::plan(facts).commands, Not(Contains(HasSubstr("projectRoots"))));
}

TEST(MigrationPlannerTest, NotesSayWhatTheScanCouldNotSee) {
    auto facts = baseFacts();
    EXPECT_THAT(MigrationPlanner::plan(facts).notes, IsEmpty());
    facts.scan.binaryFilesSkipped = 2;
    facts.scan.unreadable = {"/home/me/ws/secret: Permission denied"};
    facts.targetVolume = facts.sourceVolume;
    EXPECT_THAT(MigrationPlanner::plan(facts).notes,
                ElementsAre("2 binary files were not searched for the old path.",
                            "Not read: /home/me/ws/secret: Permission denied",
                            "The target is on the same volume as the workspace: this frees no space."));
}

TEST(MigrationPlannerTest, TheVolumeIsTheLongestMountPointAbove) {
    const std::vector<StorageVolume> volumes = {volume("/", "ext4", 1), volume("/mnt/work", "xfs", 2),
                                                volume("/mnt/work/nested", "btrfs", 3)};
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"/mnt/work/x", "/mnt/work"}, {"/mnt/workspace", "/"}, {"/mnt/work/nested", "/mnt/work/nested"}, {"/", "/"}};
    for (const auto& [path, mount] : cases)
        EXPECT_EQ(MigrationPlanner::volumeContaining(volumes, path)->mountPoint, mount) << path;
    EXPECT_FALSE(MigrationPlanner::volumeContaining({}, "/x"));
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

TEST(DockerMovePlannerTest, EachSituationRaisesItsBlockers) {
    using B = BlockerKind;
    const std::vector<BlockerCase<DockerMoveFacts>> cases = {
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
    expectBlockers(linuxFacts(), cases, DockerMovePlanner::plan);
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
