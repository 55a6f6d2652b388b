// The migration planner over plain facts: which blockers each situation raises, the commands a
// person would review (quoted for a shell), the settings that follow the move, and the way back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "migration/MigrationPlanner.h"

namespace corvel {
namespace {

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

MigrationFacts baseFacts() {
    MigrationFacts facts;
    facts.source = "/home/me/ws";
    facts.target = "/mnt/work";
    facts.allocatedBytes = 1 * GB;
    facts.sourceVolume = volume("/", "ext4", 50 * GB);
    facts.targetVolume = volume("/mnt/work", "ext4", 10 * GB);
    return facts;
}

std::vector<BlockerKind> kinds(const MigrationPlan& plan) {
    std::vector<BlockerKind> result;
    for (const auto& blocker : plan.blockers) result.push_back(blocker.kind);
    return result;
}

TEST(MigrationPlannerTest, EachSituationRaisesItsBlockers) {
    struct Case {
        const char* name;
        std::function<void(MigrationFacts&)> change;
        std::vector<BlockerKind> expected;
    };
    const std::vector<Case> cases = {
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
    for (const auto& c : cases) {
        auto facts = baseFacts();
        c.change(facts);
        const auto plan = MigrationPlanner::plan(facts);
        EXPECT_EQ(kinds(plan), c.expected) << c.name;
        EXPECT_EQ(plan.isReady, c.expected.empty()) << c.name;
    }
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

}  // namespace
}  // namespace corvel
