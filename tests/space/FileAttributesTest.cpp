// The live platform layer on the machine the tests run on.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "SpaceTestFiles.h"
#include "space/FileAttributes.h"

namespace corvel {
namespace {

TEST(FileAttributesFacts, MatchesWhatLstatSaysAboutTheFile) {
    spacetest::TemporaryFolder folder;
    folder.write("data.bin", std::string(70'000, 'd'));
    ASSERT_EQ(link(folder.path("data.bin").c_str(), folder.path("second-name").c_str()), 0);
    struct stat expected {};
    ASSERT_EQ(lstat(folder.path("data.bin").c_str(), &expected), 0);

    const auto facts = FileAttributes::facts(folder.path("data.bin"));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->fileID, expected.st_ino);
    EXPECT_EQ(facts->linkCount, 2u);
    EXPECT_EQ(facts->logicalBytes, 70'000);
    EXPECT_EQ(facts->allocatedBytes, static_cast<std::int64_t>(expected.st_blocks) * 512);
    EXPECT_EQ(facts->modified, fileTime(expected.st_mtim.tv_sec, expected.st_mtim.tv_nsec));
    ASSERT_TRUE(facts->exclusiveBytes);
    EXPECT_LE(*facts->exclusiveBytes, facts->allocatedBytes);
    EXPECT_GE(*facts->exclusiveBytes, 70'000 - 4096);

    const auto status = FileAttributes::status(folder.path("data.bin"));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->device, static_cast<std::uint64_t>(expected.st_dev));
    EXPECT_EQ(status->type, DirectoryReader::EntryType::regular);
    EXPECT_EQ(status->allocatedBytes, facts->allocatedBytes);
}

TEST(FileAttributesFacts, DoesNotFollowAFinalSymbolicLinkAndAMissingPathHasNoFacts) {
    spacetest::TemporaryFolder folder;
    folder.write("target.bin", std::string(100'000, 't'));
    ASSERT_EQ(symlink("target.bin", folder.path("link").c_str()), 0);
    const auto facts = FileAttributes::facts(folder.path("link"));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->logicalBytes, 10);  // the length of "target.bin"
    EXPECT_EQ(FileAttributes::status(folder.path("link"))->type, DirectoryReader::EntryType::symlink);
    EXPECT_FALSE(FileAttributes::physicalExtents(folder.path("link"), 10));
    // A missing path has no facts.
    EXPECT_FALSE(FileAttributes::facts(folder.path("missing")));
    EXPECT_FALSE(FileAttributes::status(folder.path("missing")));
    EXPECT_FALSE(FileAttributes::physicalExtents(folder.path("missing"), 100));
}

TEST(FileAttributesExtents, AnEmptyFileHasNoExtentsAndWrittenDataHasItsOwn) {
    spacetest::TemporaryFolder folder;
    folder.write("empty", "");
    EXPECT_EQ(FileAttributes::physicalExtents(folder.path("empty"), 0),
              std::optional<std::vector<ExtentRange>>(std::vector<ExtentRange>{}));

    folder.write("data.bin", std::string(256 * 1024, 'x'));
    const auto ranges = FileAttributes::physicalExtents(folder.path("data.bin"), 256 * 1024);
    if (!ranges) GTEST_SKIP() << "this file system does not report extents";
    ExtentUnion extents;
    extents.add(*ranges);
    EXPECT_EQ(extents.bytes(), 256 * 1024);
}

}  // namespace
}  // namespace corvel
