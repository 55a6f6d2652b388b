#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "BindMount.h"
#include "FakeFileSystem.h"
#include "SpaceTestFiles.h"
#include "space/FileAttributes.h"
#include "space/PhysicalFootprint.h"

namespace corvel {
namespace {

using PhysicalFootprint::Result;
using PhysicalFootprint::Totals;
using spacetest::FakeFileSystem;
using ::testing::ElementsAre;
using ::testing::Field;

Result measureFake(FakeFileSystem& files, const std::string& root, const std::set<std::string>& areas = {},
                   const PhysicalFootprint::CancellationCheck& isCancelled = nullptr) {
    ScanProgress progress;
    return PhysicalFootprint::measure(root, areas, progress, isCancelled, files);
}

Result measureOnDisk(const std::filesystem::path& root) {
    ScanProgress progress;
    return PhysicalFootprint::measure(root, {}, progress, nullptr);
}

// --- accounting over a staged file system ---------------------------------------------------

TEST(PhysicalFootprintAccounting, ClonesShareTheirBlocksInUniquePhysicalBytes) {
    FakeFileSystem files;
    files.directory("/data")
        .file("/data/original", 1000, {{0, 999}}, 0)
        .file("/data/clone", 1000, {{0, 999}}, 0)
        .file("/data/half-clone", 1000, {{500, 999}, {5000, 5499}}, 500);
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total, (Totals{3000, 3000, 1500, 3, 0}));
    EXPECT_FALSE(result.wasCancelled);
    EXPECT_EQ(result.deniedDirectories, 0);
}

TEST(PhysicalFootprintAccounting, FilesThatShareNothingNeedNoExtentQuery) {
    FakeFileSystem files;
    files.directory("/data")
        .file("/data/private", 4096, {{0, 4095}}, 4096)
        .file("/data/empty", 0, {}, 0)
        .file("/data/clone-a", 100, {{10000, 10099}}, 0)
        .file("/data/clone-b", 100, {{10000, 10099}}, 0);
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total.uniquePhysicalBytes, 4096 + 100);
    EXPECT_EQ(result.total.fileCount, 4);
    EXPECT_EQ(files.extentCalls, 2);  // only the clones
}

TEST(PhysicalFootprintAccounting, UnknownExclusiveSizeFallsBackToExtents) {
    FakeFileSystem files;
    files.directory("/data").file("/data/a", 10, {{0, 9}}).file("/data/b", 10, {{0, 9}});
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total, (Totals{20, 20, 10, 2, 0}));
    EXPECT_EQ(files.extentCalls, 2);
}

TEST(PhysicalFootprintAccounting, HardLinkedInodesCountOnce) {
    FakeFileSystem files;
    files.directory("/data")
        .directory("/data/sub")
        .file("/data/target", 700, {{0, 1023}}, 1024)
        .hardLink("/data/sub/link", "/data/target")
        .hardLink("/data/link2", "/data/target");
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total, (Totals{700, 1024, 1024, 1, 0}));
}

TEST(PhysicalFootprintAccounting, SymbolicLinksAreNeitherFollowedNorCounted) {
    FakeFileSystem files;
    files.directory("/data").directory("/elsewhere").file("/elsewhere/big", 1 << 20, {{0, (1 << 20) - 1}}, 1 << 20);
    files.symlink("/data/link-to-elsewhere");
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total, Totals{});
    EXPECT_EQ(files.factsCalls, 0);
}

TEST(PhysicalFootprintAccounting, EntriesOfUnknownTypeAreResolvedByTheirStatus) {
    FakeFileSystem files;
    files.directory("/data").directory("/data/sub").file("/data/sub/f", 10, {{0, 9}}, 10);
    files.node("/data/sub").hasUnknownEntryType = true;
    files.node("/data/sub/f").hasUnknownEntryType = true;
    EXPECT_EQ(measureFake(files, "/data").total.fileCount, 1);
}

TEST(PhysicalFootprintAccounting, UnreadableFilesAreCountedAndSkipped) {
    FakeFileSystem files;
    files.directory("/data")
        .file("/data/no-facts", 10, {{0, 9}})
        .file("/data/no-extents", 20, {{100, 119}})
        .file("/data/fine", 30, {{200, 229}}, 30);
    files.node("/data/no-facts").facts.reset();
    files.node("/data/no-extents").extents.reset();
    const Result result = measureFake(files, "/data", {"/data"});
    // The file without extents still has known sizes, so it is counted; only its place on the
    // device is unknown.
    EXPECT_EQ(result.total, (Totals{50, 50, 30, 2, 2}));
    EXPECT_EQ(result.areas.at("/data"), result.total);
}

// --- the walk ----------------------------------------------------------------------------------

TEST(PhysicalFootprintWalk, DoesNotEnterOtherVolumesOrBindMountsBelowTheRoot) {
    FakeFileSystem files;
    files.directory("/data")
        .directory("/data/mnt", 2, 2)
        .file("/data/mnt/big", 5000, {{0, 4999}}, 5000)
        .directory("/data/bound-view", 1, 3)  // same device, another mount
        .file("/data/bound-view/small", 10, {{0, 9}}, 10)
        .file("/data/small", 10, {{0, 9}}, 10);
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.total.fileCount, 1);
    EXPECT_EQ(result.total.logicalBytes, 10);
    EXPECT_EQ(result.deniedDirectories, 0);
    EXPECT_EQ(files.openHandles(), 0u);
}

TEST(PhysicalFootprintWalk, FailuresAreCountedPerReasonWithTheFoldersNamedAndTheWalkGoesOn) {
    FakeFileSystem files;
    files.directory("/data")
        .deniedDirectory("/data/secret")
        .file("/data/secret/hidden", 10, {{0, 9}}, 10)
        .deniedDirectory("/data/broken-disk", EIO)
        .directory("/data/open")
        .file("/data/open/visible", 20, {{100, 119}}, 20)
        .directory("/data/half-listed")
        .file("/data/half-listed/read-before-the-error", 30, {{200, 229}}, 30)
        .file("/data/no-facts", 5, {{300, 304}}, 5);
    files.node("/data/half-listed").listError = EIO;
    files.node("/data/no-facts").facts.reset();
    const Result result = measureFake(files, "/data");
    EXPECT_EQ(result.deniedDirectories, 3);
    EXPECT_EQ(result.total, (Totals{50, 50, 50, 2, 1}));
    EXPECT_THAT(result.failures.byError, ElementsAre(FailureCount{EIO, std::strerror(EIO), 2, 1},
                                                     FailureCount{EACCES, std::strerror(EACCES), 1, 0}));
    EXPECT_THAT(result.failures.deniedFolders,
                ::testing::UnorderedElementsAre("/data/secret", "/data/broken-disk", "/data/half-listed"));
    EXPECT_FALSE(result.rootError);
    EXPECT_EQ(files.openHandles(), 0u);
}

TEST(PhysicalFootprintWalk, ARootThatCannotBeReadIsSaidSo) {
    FakeFileSystem files;
    files.deniedDirectory("/locked");
    for (const char* root : {"/nowhere", "/locked"}) {
        const Result result = measureFake(files, root);
        EXPECT_EQ(result.deniedDirectories, 1) << root;
        EXPECT_EQ(result.total, Totals{});
        EXPECT_FALSE(result.wasCancelled);
        EXPECT_TRUE(result.rootError) << root;
        EXPECT_THAT(result.failures.deniedFolders, ElementsAre(root));
    }
}

TEST(PhysicalFootprintWalk, WalksFromTheFileSystemRoot) {
    FakeFileSystem files;
    files.directory("/a").file("/a/f", 10, {{0, 9}}, 10).file("/g", 5, {{20, 24}}, 5);
    EXPECT_EQ(measureFake(files, "/").total.fileCount, 2);
    EXPECT_EQ(PhysicalFootprint::childPath("/", "a"), "/a");
    EXPECT_EQ(PhysicalFootprint::childPath("/a", "b"), "/a/b");
}

TEST(PhysicalFootprintWalk, PublishesFilesBytesAndFoldersAsTheScannerDoes) {
    FakeFileSystem files;
    files.directory("/data")
        .deniedDirectory("/data/locked")
        .directory("/data/sub")
        .file("/data/sub/a", 100, {{0, 99}}, 100)
        .file("/data/b", 50, {{200, 249}}, 50)
        .hardLink("/data/sub/b-again", "/data/b");
    ScanProgress progress;
    PhysicalFootprint::measure("/data", {}, progress, nullptr, files);
    const ScanProgress::Snapshot snapshot = progress.snapshot();
    EXPECT_EQ(snapshot.files, 2);
    EXPECT_EQ(snapshot.allocatedBytes, 150);
    EXPECT_EQ(snapshot.directories, 3);
    EXPECT_EQ(snapshot.deniedDirectories, 1);
    EXPECT_EQ(snapshot.currentFolder, "/data");
    EXPECT_TRUE(snapshot.finished);
}

// --- areas -----------------------------------------------------------------------------------

TEST(PhysicalFootprintAreas, AccountsEachAreaSeparatelyAndTheInnermostWins) {
    FakeFileSystem files;
    files.directory("/data")
        .file("/data/loose", 1, {{0, 0}}, 1)
        .directory("/data/images")
        .file("/data/images/base", 100, {{1000, 1099}}, 0)
        .directory("/data/images/layers")
        .file("/data/images/layers/clone", 100, {{1000, 1099}}, 0)
        .directory("/data/volumes")
        .file("/data/volumes/db", 50, {{5000, 5049}}, 50);
    const Result result = measureFake(files, "/data", {"/data/images", "/data/images/layers/", "/data/absent"});
    EXPECT_EQ(result.total, (Totals{251, 251, 151, 4, 0}));
    EXPECT_EQ(result.areas.at("/data/images"), (Totals{100, 100, 100, 1, 0}));
    EXPECT_EQ(result.areas.at("/data/images/layers"), (Totals{100, 100, 100, 1, 0}));
    EXPECT_EQ(result.areas.at("/data/absent"), Totals{});
    EXPECT_EQ(result.areas.size(), 3u);
}

TEST(PhysicalFootprintAreas, TheRootCanBeAnArea) {
    FakeFileSystem files;
    files.directory("/data").directory("/data/sub").file("/data/sub/f", 8, {{0, 7}}, 8);
    const Result result = measureFake(files, "/data/", {"/data"});
    EXPECT_EQ(result.areas.at("/data"), result.total);
    EXPECT_EQ(result.total.fileCount, 1);
}

// --- cancellation ------------------------------------------------------------------------------

TEST(PhysicalFootprintCancellation, StopsAtTheNextFolderKeepingWhatWasMeasured) {
    FakeFileSystem files;
    files.directory("/data").file("/data/f", 10, {{0, 9}}, 10).directory("/data/last");
    // Before the first folder: zeros, flagged cancelled.
    Result result = measureFake(files, "/data", {"/data"}, [] { return true; });
    EXPECT_TRUE(result.wasCancelled);
    EXPECT_EQ(result.total, Totals{});
    EXPECT_EQ(result.areas.at("/data"), Totals{});
    EXPECT_EQ(files.directoryReads, 0);
    // Noticed at the last folder: what was measured before stays.
    int polls = 0;
    result = measureFake(files, "/data", {}, [&] { return ++polls == 2; });
    EXPECT_TRUE(result.wasCancelled);
    EXPECT_EQ(result.total.fileCount, 1);
    EXPECT_EQ(files.directoryReads, 1);
    // A walk that finishes before the check would answer yes is not cancelled.
    polls = 0;
    result = measureFake(files, "/data", {}, [&] { return ++polls > 2; });
    EXPECT_FALSE(result.wasCancelled);
    EXPECT_EQ(polls, 2);
}

TEST(PhysicalFootprintJson, EncodesWithFieldNamesInOrderAndRoundTrips) {
    Result result;
    result.total = {1, 2, 3, 4, 5};
    result.areas["/x"] = {6, 7, 8, 9, 10};
    result.deniedDirectories = 2;
    result.wasCancelled = true;
    const Json json = result;
    result.failures.folderFailed(EACCES, "/x/locked");
    EXPECT_EQ(json.dump(),
              R"({"total":{"logicalBytes":1,"allocatedBytes":2,"uniquePhysicalBytes":3,)"
              R"("fileCount":4,"unreadableFiles":5},"areas":{"/x":{"logicalBytes":6,)"
              R"("allocatedBytes":7,"uniquePhysicalBytes":8,"fileCount":9,"unreadableFiles":10}},)"
              R"("deniedDirectories":2,"wasCancelled":true,"failures":{"byError":[],"deniedFolders":[]}})");
    const Json withFailures = result;
    EXPECT_EQ(withFailures["failures"]["byError"][0]["errorNumber"], EACCES);
    EXPECT_EQ(withFailures.get<Result>(), result);
}

// --- the live file system ----------------------------------------------------------------------

class PhysicalFootprintOnDisk : public ::testing::Test {
protected:
    spacetest::TemporaryFolder folder;
};

TEST_F(PhysicalFootprintOnDisk, HardLinksInsideTheTreeCountOnce) {
    folder.write("a/data.bin", std::string(10'000, 'x'));
    folder.makeFolder("b");
    ASSERT_EQ(link(folder.path("a/data.bin").c_str(), folder.path("b/link.bin").c_str()), 0);
    ASSERT_EQ(link(folder.path("a/data.bin").c_str(), folder.path("link2.bin").c_str()), 0);
    const Result result = measureOnDisk(folder.root());
    EXPECT_EQ(result.total.fileCount, 1);
    EXPECT_EQ(result.total.logicalBytes, 10'000);
    EXPECT_EQ(result.total.unreadableFiles, 0);
    EXPECT_GE(result.total.allocatedBytes, 10'000);
}

TEST_F(PhysicalFootprintOnDisk, ASparseFileAllocatesLessThanItsLength) {
    folder.write("sparse.bin", "start");
    constexpr off_t length = 64 << 20;
    ASSERT_EQ(truncate(folder.path("sparse.bin").c_str(), length), 0);
    folder.write("empty.bin", "");
    const Result result = measureOnDisk(folder.root());
    EXPECT_EQ(result.total.fileCount, 2);
    EXPECT_EQ(result.total.logicalBytes, length);
    EXPECT_GT(result.total.allocatedBytes, 0);
    EXPECT_LT(result.total.allocatedBytes, length / 16);
    EXPECT_LE(result.total.uniquePhysicalBytes, result.total.allocatedBytes);
}

TEST_F(PhysicalFootprintOnDisk, AnUnreadableFolderCountsAsDenied) {
    if (geteuid() == 0) GTEST_SKIP() << "running as root: folder permissions do not stop root";
    folder.write("locked/inside.txt", "secret");
    folder.write("open.txt", "hello");
    ASSERT_EQ(chmod(folder.path("locked").c_str(), 0), 0);
    const Result result = measureOnDisk(folder.root());
    chmod(folder.path("locked").c_str(), 0755);
    EXPECT_EQ(result.deniedDirectories, 1);
    EXPECT_EQ(result.total.fileCount, 1);
}

TEST_F(PhysicalFootprintOnDisk, AChainDeeperThanTheLongestPathIsMeasuredInFull) {
    const spacetest::DeepChain chain(folder.makeFolder("chain"), std::string(40, 'd'), 150, 5'000);  // past 4,096
    const Result result = measureOnDisk(folder.path("chain"));
    EXPECT_EQ(result.total.fileCount, 2);
    EXPECT_EQ(result.total.logicalBytes, 10'000);
    EXPECT_EQ(result.deniedDirectories, 0);
    EXPECT_FALSE(result.rootError);
}

TEST_F(PhysicalFootprintOnDisk, ABindMountOfAFolderInsideItsOwnTreeIsNotCountedAgain) {
    folder.write("tree/data/file.bin", std::string(30'000, 'b'));
    folder.makeFolder("tree/data/view");
    const spacetest::BindMount mount(folder.path("tree/data"), folder.path("tree/data/view"));
    if (!mount.mounted()) GTEST_SKIP() << mount.reason();
    const Result result = measureOnDisk(folder.path("tree"));
    EXPECT_EQ(result.total.fileCount, 1);
    EXPECT_EQ(result.total.logicalBytes, 30'000);
}

}  // namespace
}  // namespace corvel
