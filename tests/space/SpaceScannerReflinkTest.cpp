// The space scanner on a file system that shares blocks: a small XFS image with reflinks,
// loop-mounted for the suite. Needs root, loop devices and xfsprogs; skips with the reason
// where any of that is missing.
#include "ReflinkVolume.h"
#include "space/SpaceScanner.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace corvel {
namespace {

namespace fs = std::filesystem;
using spacetest::blocksOf;

class SpaceScannerOnReflinks : public spacetest::ReflinkVolumeTest {
protected:
    static void copy(const std::string& from, const std::string& to, const char* mode) {
        fs::create_directories(fs::path(to).parent_path());
        const std::string command = std::string("cp --reflink=") + mode + " '" + from + "' '" + to + "' && sync";
        ASSERT_EQ(spacetest::runQuietly(command), 0);
    }
};

TEST_F(SpaceScannerOnReflinks, ClonesHoldNoExclusiveBytesAndAreNotDuplicatesOfEachOther) {
    const std::size_t size = 2 << 20;
    writeRandom(tree_ + "/x/original", size, 7);
    ::sync();
    copy(tree_ + "/x/original", tree_ + "/y/clone", "always");
    copy(tree_ + "/x/original", tree_ + "/z/full-copy", "never");
    const std::int64_t fileBlocks = blocksOf(tree_ + "/x/original");

    ScanProgress progress;
    const ScanTree tree = SpaceScanner::scan(tree_, {}, progress, [] { return false; });
    EXPECT_EQ(tree.root->fileCount, 3);
    // Both clones list their blocks as shared; the full copy shares nothing.
    EXPECT_EQ(tree.cloneSharedBytes, 2 * fileBlocks);
    for (const ScanDirectory* child = tree.root->firstChild; child; child = child->nextSibling) {
        const std::string name(child->nameView());
        const std::int64_t own = blocksOf(tree_ + "/" + name);
        if (name == "z") {
            EXPECT_EQ(child->exclusiveBytes, own + fileBlocks) << name;
        } else {
            EXPECT_EQ(child->exclusiveBytes, own) << name;
        }
        EXPECT_EQ(child->allocatedBytes, own + fileBlocks) << name;
    }
    // The clone pair is one file for the duplicate search; the full copy duplicates it.
    ASSERT_EQ(tree.duplicates.size(), 1u);
    EXPECT_EQ(tree.duplicates[0].paths, (std::vector<std::string>{tree_ + "/x/original", tree_ + "/z/full-copy"}));
}

}  // namespace
}  // namespace corvel
