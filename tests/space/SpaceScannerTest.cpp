// The space scanner on real temporary trees: what it counts, what it refuses to count, and how
// it stops.
#include "BindMount.h"
#include "SpaceTestFiles.h"
#include "space/ScanReporting.h"
#include "space/SpaceScanner.h"
#include "space/SpaceTreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>
#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#if defined(__linux__)
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#endif

namespace corvel {
namespace {

using spacetest::blocksOf;
using spacetest::TemporaryFolder;

// What du -s -B1 reports: st_blocks of every inode below the root (the root included), each once.
std::int64_t duTotal(const std::filesystem::path& root) {
    std::set<std::pair<dev_t, ino_t>> seen;
    std::int64_t total = 0;
    auto count = [&](const std::filesystem::path& path) {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0) return;
        if (!seen.emplace(st.st_dev, st.st_ino).second) return;
        total += static_cast<std::int64_t>(st.st_blocks) * 512;
    };
    count(root);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) count(entry.path());
    return total;
}

ScanTree scanOf(
    const std::string& root, SpaceScanOptions options = {},
    const std::function<bool()>& isCancelled = [] { return false; }) {
    ScanProgress progress;
    return SpaceScanner::scan(root, options, progress, isCancelled);
}

SpaceNode treeOf(const ScanTree& tree, const SpaceTreeOptions& options = {}) {
    const SpaceCatalog catalog("/nonexistent-home");
    SpaceTreeBuilder builder;
    ScanReporting::emit(tree, catalog, options, ScanReporting::report(tree, catalog), builder);
    return builder.root();
}

const SpaceNode* childNamed(const SpaceNode& node, const std::string& name) {
    for (const auto& child : node.children)
        if (child.name == name) return &child;
    return nullptr;
}

TEST(SpaceScannerTotals, AllocatedTotalEqualsBlocksOverUniqueInodes) {
    TemporaryFolder folder;
    for (int i = 0; i < 40; ++i)
        folder.write("p" + std::to_string(i % 7) + "/d" + std::to_string(i % 3) + "/f" + std::to_string(i),
                     std::string(static_cast<std::size_t>(i) * 1111, 'x'));
    folder.write("empty-file", "");
    folder.makeFolder("empty/deeper/still");
    std::filesystem::create_hard_link(folder.path("p1/d1/f1"), folder.path("p2/link"));
    std::filesystem::create_symlink("p1", folder.path("to-p1"));
    const ScanTree tree = scanOf(folder.path());
    EXPECT_EQ(tree.root->allocatedBytes, duTotal(folder.root()));
    EXPECT_EQ(tree.root->fileCount, 41);               // the hard link's second name is not a second file
    EXPECT_EQ(tree.root->directoryCount, 7 + 21 + 3);  // p*, every p*/d* pair, empty/deeper/still
    EXPECT_FALSE(tree.wasCancelled);
}

TEST(SpaceScannerTotals, SameResultWithOneThreadOrMany) {
    TemporaryFolder folder;
    for (int i = 0; i < 300; ++i)
        folder.write("a" + std::to_string(i % 13) + "/b" + std::to_string(i % 5) + "/f" + std::to_string(i),
                     std::string(static_cast<std::size_t>(i) * 97, 'y'));
    SpaceScanOptions one;
    one.threads = 1;
    SpaceScanOptions many;
    many.threads = 16;
    const ScanTree a = scanOf(folder.path(), one);
    const ScanTree b = scanOf(folder.path(), many);
    EXPECT_EQ(a.root->allocatedBytes, b.root->allocatedBytes);
    EXPECT_EQ(a.root->logicalBytes, b.root->logicalBytes);
    EXPECT_EQ(a.root->fileCount, 300);
    EXPECT_EQ(b.root->fileCount, 300);
    EXPECT_EQ(treeOf(a), treeOf(b));
}

TEST(SpaceScannerLinks, HardLinksCountOnceAndAreExclusiveOnlyWhereAllNamesLie) {
    TemporaryFolder folder;
    folder.write("inside/a/file", std::string(100000, 'h'));
    folder.makeFolder("inside/b");
    std::filesystem::create_hard_link(folder.path("inside/a/file"), folder.path("inside/b/second-name"));
    folder.write("other/alone", std::string(50000, 'o'));
    std::filesystem::create_hard_link(folder.path("other/alone"), folder.path("outside-name"));
    const std::int64_t fileBlocks = blocksOf(folder.path("inside/a/file"));

    const ScanTree whole = scanOf(folder.path());
    EXPECT_EQ(whole.root->allocatedBytes, duTotal(folder.root()));
    EXPECT_EQ(whole.hardLinkSavedBytes, fileBlocks + blocksOf(folder.path("other/alone")));

    // Scanning only "inside": both names are there, so the bytes are exclusive to "inside" and to
    // no single subfolder (deleting a or b alone frees nothing).
    const SpaceNode inside = treeOf(scanOf(folder.path("inside")));
    EXPECT_EQ(inside.fileCount, 1);
    EXPECT_GE(inside.exclusiveBytes, fileBlocks);
    for (const auto& child : inside.children)
        if (!child.isAggregate()) {
            EXPECT_LT(child.exclusiveBytes, fileBlocks) << child.name;
        }

    // Scanning only "other": the second name lies outside, so nothing of the file is exclusive.
    const ScanTree other = scanOf(folder.path("other"));
    EXPECT_EQ(other.root->allocatedBytes, blocksOf(folder.path("other")) + blocksOf(folder.path("other/alone")));
    EXPECT_EQ(other.root->exclusiveBytes, blocksOf(folder.path("other")));
}

TEST(SpaceScannerLinks, SymbolicLinksAreNeverFollowed) {
    TemporaryFolder outside;
    outside.write("huge", std::string(2'000'000, 'z'));
    TemporaryFolder folder;
    folder.write("real/file", "abc");
    std::filesystem::create_directory_symlink(outside.root(), folder.path("link-out"));
    std::filesystem::create_directory_symlink(folder.path("real"), folder.path("link-in"));
    std::filesystem::create_symlink(outside.path("huge"), folder.path("file-link"));
    const ScanTree tree = scanOf(folder.path());
    EXPECT_EQ(tree.root->allocatedBytes, duTotal(folder.root()));
    EXPECT_LT(tree.root->allocatedBytes, 1'000'000);
    EXPECT_EQ(tree.root->fileCount, 1);
    EXPECT_EQ(tree.root->directoryCount, 1);
}

TEST(SpaceScannerBoundaries, AMountPointBelowTheRootIsNotEntered) {
    TemporaryFolder folder;
    folder.write("data/file", std::string(10000, 'd'));
    folder.makeFolder("mnt");
#if !defined(__linux__)
    GTEST_SKIP() << "mounting a scratch file system is only scripted for Linux";
#else
    if (::mount("velmora-test", folder.path("mnt").c_str(), "tmpfs", 0, "size=4m") != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here (needs root and CAP_SYS_ADMIN): " << std::strerror(errno);
    struct Unmount {
        std::string path;
        ~Unmount() { ::umount2(path.c_str(), MNT_DETACH); }
    } unmount{folder.path("mnt")};
    folder.write("mnt/inside-the-mount", std::string(200000, 'm'));

    const ScanTree tree = scanOf(folder.path());
    EXPECT_EQ(tree.skippedMountPoints, 1);
    EXPECT_EQ(tree.root->fileCount, 1);
    EXPECT_EQ(tree.root->allocatedBytes,
              blocksOf(folder.root()) + blocksOf(folder.path("data")) + blocksOf(folder.path("data/file")));

    SpaceScanOptions everywhere;
    everywhere.oneFileSystem = false;
    const ScanTree crossing = scanOf(folder.path(), everywhere);
    EXPECT_EQ(crossing.root->fileCount, 2);
    EXPECT_EQ(crossing.skippedMountPoints, 0);

    // A bind mount of a folder inside the tree, on the same device, is a mount point all the same.
    folder.makeFolder("data/view");
    const spacetest::BindMount bound(folder.path("data"), folder.path("data/view"));
    ASSERT_TRUE(bound.mounted()) << bound.reason();
    const ScanTree once = scanOf(folder.path());
    EXPECT_EQ(once.root->fileCount, 1);
    EXPECT_EQ(once.skippedMountPoints, 2);
#endif
}

TEST(SpaceScannerBoundaries, ExcludedNamesAndSecondViewsAreLeftOut) {
    TemporaryFolder folder;
    folder.write("keep/file", std::string(5000, 'k'));
    folder.write("project/node_modules/pkg/index.js", std::string(90000, 'n'));
    folder.write("second-view/file", std::string(70000, 's'));
    SpaceScanOptions options;
    options.excludes = {"node_modules"};
    options.countedElsewhere = {folder.path("second-view")};
    const SpaceNode tree = treeOf(scanOf(folder.path(), options));
    EXPECT_EQ(tree.fileCount, 1);
    ASSERT_NE(childNamed(tree, "project"), nullptr);
    EXPECT_EQ(childNamed(tree, "project")->fileCount, 0);
    EXPECT_EQ(childNamed(tree, "second-view"), nullptr);

    SpaceScanOptions byPath;
    byPath.excludes = {folder.path("keep") + "/*"};
    EXPECT_EQ(scanOf(folder.path(), byPath).root->fileCount, 2);
}

// Runs `work` on a thread without the capabilities that let root ignore permissions; threads it
// starts inherit that. Returns false when the capabilities cannot be dropped.
bool runWithoutPermissionOverride(const std::function<void()>& work) {
    bool dropped = false;
#if defined(__linux__)
    std::thread thread([&] {
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct data[2]{};
        if (::syscall(SYS_capget, &header, data) != 0) return;
        for (int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
            data[capability / 32].effective &= ~(1u << (capability % 32));
        }
        if (::syscall(SYS_capset, &header, data) != 0) return;
        dropped = true;
        work();
    });
    thread.join();
#else
    (void)work;
#endif
    return dropped;
}

TEST(SpaceScannerBoundaries, AnUnreadableFolderCountsAsDeniedAndTheWalkGoesOn) {
    TemporaryFolder folder;
    folder.write("open/a", std::string(3000, 'a'));
    folder.write("closed/secret", std::string(3000, 's'));
    folder.write("zz-after/b", std::string(3000, 'b'));
    std::filesystem::permissions(folder.path("closed"), std::filesystem::perms::none);
    std::optional<ScanTree> tree;
    auto scan = [&] { tree = scanOf(folder.path()); };
    if (::geteuid() == 0) {
        // Root reads every folder whatever its mode; without these capabilities it does not.
        if (!runWithoutPermissionOverride(scan))
            GTEST_SKIP() << "running as root, and the permission-override capabilities cannot be dropped";
    } else {
        scan();
    }
    ASSERT_TRUE(tree.has_value());
    EXPECT_EQ(tree->deniedDirectories, 1);
    EXPECT_EQ(tree->root->fileCount, 2);
    const SpaceNode node = treeOf(*tree);
    ASSERT_NE(childNamed(node, "closed"), nullptr);
    EXPECT_TRUE(childNamed(node, "closed")->accessDenied);
    EXPECT_EQ(childNamed(node, "closed")->allocatedBytes, blocksOf(folder.path("closed")));
    EXPECT_FALSE(childNamed(node, "open")->accessDenied);
}

TEST(SpaceScannerCancellation, ACancelledWalkReturnsPartialTotalsFlaggedAsCancelled) {
    TemporaryFolder folder;
    for (int i = 0; i < 60; ++i) folder.write("d" + std::to_string(i) + "/f", std::string(4096, 'c'));
    SpaceScanOptions options;
    options.threads = 1;
    std::atomic<int> polls{0};
    const ScanTree partial = scanOf(folder.path(), options, [&] { return ++polls > 10; });
    EXPECT_TRUE(partial.wasCancelled);
    EXPECT_GT(partial.root->fileCount, 0);
    EXPECT_LT(partial.root->fileCount, 60);
    EXPECT_EQ(ScanReporting::report(partial, SpaceCatalog("/h")).wasCancelled, true);

    const ScanTree none = scanOf(folder.path(), options, [] { return true; });
    EXPECT_TRUE(none.wasCancelled);
    EXPECT_EQ(none.root->fileCount, 0);
    EXPECT_EQ(none.root->allocatedBytes, 0);

    const ScanTree whole = scanOf(folder.path(), options);
    EXPECT_FALSE(whole.wasCancelled);
    EXPECT_EQ(whole.root->fileCount, 60);
}

TEST(SpaceScannerTree, SmallChildrenAreFoldedIntoOneAggregateNode) {
    TemporaryFolder folder;
    for (int i = 0; i < 100; ++i)
        folder.write("many/f" + std::to_string(i), std::string(static_cast<std::size_t>(i + 1) * 5000, 'q'));
    for (int i = 0; i < 30; ++i) folder.makeFolder("many/sub" + std::to_string(i));
    SpaceTreeOptions options;
    options.maxChildren = 5;
    options.minimumShare = 0;
    const SpaceNode tree = treeOf(scanOf(folder.path()), options);
    const SpaceNode* many = childNamed(tree, "many");
    ASSERT_NE(many, nullptr);
    ASSERT_EQ(many->children.size(), 6u);
    const SpaceNode& aggregate = many->children.back();
    EXPECT_TRUE(aggregate.isAggregate());
    EXPECT_EQ(aggregate.aggregatedItems, 125);
    EXPECT_EQ(many->children.front().name, "f99");  // largest first
    std::int64_t sum = blocksOf(folder.path("many"));
    std::int64_t files = 0;
    for (const auto& child : many->children) {
        sum += child.allocatedBytes;
        files += child.fileCount;
    }
    EXPECT_EQ(sum, many->allocatedBytes);
    EXPECT_EQ(files, 100);
    EXPECT_EQ(aggregate.directoryCount, 30);
}

TEST(SpaceScannerTree, DepthLimitsTheTreeButNotTheTotals) {
    TemporaryFolder folder;
    folder.write("a/b/c/d/e/file", std::string(40000, 'e'));
    SpaceTreeOptions options;
    options.maxDepth = 2;
    const SpaceNode tree = treeOf(scanOf(folder.path()), options);
    const SpaceNode* a = childNamed(tree, "a");
    ASSERT_NE(a, nullptr);
    const SpaceNode* b = childNamed(*a, "b");
    ASSERT_NE(b, nullptr);
    EXPECT_TRUE(b->children.empty());
    EXPECT_EQ(b->fileCount, 1);
    EXPECT_EQ(b->directoryCount, 3);
    EXPECT_EQ(tree.allocatedBytes, duTotal(folder.root()));
}

TEST(SpaceScannerFindings, LargestFilesDuplicatesAndTrashCredentials) {
    TemporaryFolder folder;
    const std::string payload(2'000'000, 'p');
    folder.write("one/copy.bin", payload);
    folder.write("two/copy.bin", payload);
    std::filesystem::create_hard_link(folder.path("one/copy.bin"), folder.path("two/hard.bin"));
    std::string different = payload;
    different.back() = 'X';  // same length and same first 64 KiB, other content
    folder.write("three/almost.bin", different);
    folder.write("small.txt", "tiny");
    folder.write(".local/share/Trash/files/id_ed25519", "key");
    folder.write(".local/share/Trash/files/notes.md", "harmless");

    SpaceScanOptions options;
    options.largestFileCount = 2;
    const ScanTree tree = scanOf(folder.path(), options);
    ASSERT_EQ(tree.largestFiles.size(), 2u);
    EXPECT_GE(tree.largestFiles[0].allocatedBytes, tree.largestFiles[1].allocatedBytes);
    ASSERT_EQ(tree.duplicates.size(), 1u);
    // The hard-linked inode appears once, under whichever of its two names the parallel walk met first.
    const auto& paths = tree.duplicates[0].paths;
    ASSERT_EQ(paths.size(), 2u) << ::testing::PrintToString(paths);
    EXPECT_NE(std::find(paths.begin(), paths.end(), folder.path("two/copy.bin")), paths.end());
    const bool linkedOnce = std::count(paths.begin(), paths.end(), folder.path("one/copy.bin")) +
                                std::count(paths.begin(), paths.end(), folder.path("two/hard.bin")) ==
                            1;
    EXPECT_TRUE(linkedOnce) << ::testing::PrintToString(paths);
    EXPECT_EQ(tree.credentialsInTrash, std::vector<std::string>{folder.path(".local/share/Trash/files/id_ed25519")});
}

TEST(SpaceScannerErrors, AMissingOrNonFolderRootIsAnErrorNamingThePath) {
    TemporaryFolder folder;
    folder.write("plain", "x");
    EXPECT_THAT([&] { scanOf(folder.path("missing")); },
                ::testing::ThrowsMessage<SpaceScanError>(::testing::HasSubstr(folder.path("missing"))));
    EXPECT_THROW(scanOf(folder.path("plain")), SpaceScanError);
}

TEST(SpaceScannerProgress, CountsEveryFolderAndFileByTheEnd) {
    TemporaryFolder folder;
    for (int i = 0; i < 20; ++i) folder.write("x" + std::to_string(i % 4) + "/f" + std::to_string(i), "data");
    ScanProgress progress;
    const ScanTree tree = SpaceScanner::scan(folder.path(), {}, progress, [] { return false; });
    const auto snapshot = progress.snapshot();
    EXPECT_TRUE(snapshot.finished);
    EXPECT_EQ(snapshot.files, 20);
    EXPECT_EQ(snapshot.directories, 5);
    EXPECT_EQ(snapshot.allocatedBytes, tree.root->allocatedBytes);
}

TEST(SpaceScannerPaths, RootIsNormalised) {
    EXPECT_EQ(SpaceScanner::normalisedRoot("/a/b/"), "/a/b");
    EXPECT_EQ(SpaceScanner::normalisedRoot("/a/./c/../b"), "/a/b");
    EXPECT_EQ(SpaceScanner::normalisedRoot("/"), "/");
}

}  // namespace
}  // namespace corvel
