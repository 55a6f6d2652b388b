// Duplicate candidates: what may be compared at all, and what the contents decide.
#include "SpaceTestFiles.h"
#include "space/DuplicateFinder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace corvel {
namespace {

using DuplicateFinder::Candidate;
using spacetest::TemporaryFolder;

Candidate candidate(const std::string& path, std::int64_t length, std::uint64_t inode, std::int64_t physical = -1) {
    return {path, length, length, 1, inode, physical};
}

std::vector<DuplicateGroup> groupsOf(std::vector<Candidate> candidates, const std::function<bool()>& isCancelled) {
    ScanProgress progress;
    return DuplicateFinder::find(std::move(candidates), 2, progress, isCancelled).groups;
}

Candidate onDisk(const TemporaryFolder& folder, const std::string& relative) {
    struct stat st {};
    const std::string path = folder.path(relative);
    if (::stat(path.c_str(), &st) != 0) throw std::runtime_error("stat " + path);
    return {path, st.st_size, st.st_blocks * 512, st.st_dev, st.st_ino, -1};
}

TEST(DuplicateFinderGroups, OnlyEqualLengthsWithDistinctInodesAndCloneFamiliesAreCompared) {
    const auto groups = DuplicateFinder::sameLengthGroups({
        candidate("/a", 100, 1),
        candidate("/a-hard-link", 100, 1),  // same inode: one file
        candidate("/b", 100, 2),
        candidate("/lonely", 50, 3),
        candidate("/clone-1", 700, 4, 8192),
        candidate("/clone-2", 700, 5, 8192),  // shares its first block with clone-1
        candidate("/big-1", 900, 6),
        candidate("/big-2", 900, 7),
    });
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].size(), 2u);
    EXPECT_EQ(groups[0][0].path, "/big-1");  // largest length first
    ASSERT_EQ(groups[1].size(), 2u);
    EXPECT_EQ(groups[1][0].path, "/a");
    EXPECT_EQ(groups[1][1].path, "/b");
}

TEST(DuplicateFinderContents, SameContentIsADuplicateAndADifferentTailIsNot) {
    TemporaryFolder folder;
    const std::string content(300'000, 'c');
    std::string tail = content;
    tail[299'999] = 'T';
    folder.write("first", content);
    folder.write("second", content);
    folder.write("same-start-other-tail", tail);
    folder.write("small-1", "hello");
    folder.write("small-2", "hello");
    folder.write("small-3", "world");
    std::vector<Candidate> all{
        onDisk(folder, "first"),   onDisk(folder, "second"),  onDisk(folder, "same-start-other-tail"),
        onDisk(folder, "small-1"), onDisk(folder, "small-2"), onDisk(folder, "small-3")};
    const auto groups = groupsOf(all, [] { return false; });
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].paths, (std::vector<std::string>{folder.path("first"), folder.path("second")}));
    EXPECT_EQ(groups[0].contentHash, DuplicateFinder::digest(folder.path("first"), -1));
    EXPECT_EQ(groups[0].reclaimableBytes(), groups[0].allocatedBytes);
    EXPECT_EQ(groups[1].paths, (std::vector<std::string>{folder.path("small-1"), folder.path("small-2")}));
    // SHA-256("hello")
    EXPECT_EQ(groups[1].contentHash, "2cf24dba5fb0a30e26e83b2ac5b9e29e1b161e5c1fa7425e73043362938b9824");
}

TEST(DuplicateFinderContents, UnreadableFilesDropOutAndCancellingFindsNothing) {
    TemporaryFolder folder;
    folder.write("x", "same");
    folder.write("y", "same");
    auto gone = onDisk(folder, "y");
    gone.path = folder.path("deleted-meanwhile");
    EXPECT_TRUE(groupsOf({onDisk(folder, "x"), gone}, [] { return false; }).empty());
    EXPECT_TRUE(groupsOf({onDisk(folder, "x"), onDisk(folder, "y")}, [] { return true; }).empty());
    EXPECT_FALSE(DuplicateFinder::digest(folder.path("deleted-meanwhile"), -1).has_value());
    EXPECT_EQ(DuplicateFinder::digest(folder.path("x"), 2), DuplicateFinder::digest(folder.path("y"), 2));
}

TEST(DuplicateFinderContents, SparseFilesAreLeftOutAndHashingIsCountedAndCancellableBetweenBlocks) {
    TemporaryFolder folder;
    // Two empty sparse images: all holes, so reading them would only read zeros.
    folder.write("image-1.img", "");
    folder.write("image-2.img", "");
    for (const char* name : {"image-1.img", "image-2.img"})
        ASSERT_EQ(::truncate(folder.path(name).c_str(), 256 << 20), 0);
    const std::string content(1'000'000, 'd');
    folder.write("dense-1", content);
    folder.write("dense-2", content);
    ScanProgress progress;
    const auto search = DuplicateFinder::find({onDisk(folder, "image-1.img"), onDisk(folder, "image-2.img"),
                                               onDisk(folder, "dense-1"), onDisk(folder, "dense-2")},
                                              2, progress, [] { return false; });
    EXPECT_EQ(search.sparseLeftOut, 2);
    ASSERT_EQ(search.groups.size(), 1u);
    EXPECT_THAT(search.groups[0].paths, ::testing::ElementsAre(folder.path("dense-1"), folder.path("dense-2")));
    const auto hashed = progress.snapshot();
    EXPECT_EQ(hashed.hashedCandidates, 2);  // the full pass over the two dense files
    EXPECT_EQ(hashed.hashCandidates, 2);

    int polls = 0;
    EXPECT_FALSE(DuplicateFinder::digest(folder.path("dense-1"), -1, [&] { return ++polls == 2; }));
    EXPECT_EQ(polls, 2);  // stopped after one block of four
}

}  // namespace
}  // namespace corvel
