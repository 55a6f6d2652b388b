#include "common/AtomicFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <filesystem>
#include <fstream>

using namespace corvel;
namespace fs = std::filesystem;

namespace {
class AtomicFileTest : public ::testing::Test {
protected:
    corvel::testing::TemporaryFolder temporary;
    const fs::path& folder = temporary.root();
};
}  // namespace

TEST_F(AtomicFileTest, WritesCreatingFoldersAndReplacesWhole) {
    const auto path = folder / "nested" / "settings.json";
    AtomicFile::write(path, "first version, quite long");
    EXPECT_EQ(AtomicFile::read(path), "first version, quite long");
    AtomicFile::write(path, "second");
    EXPECT_EQ(AtomicFile::read(path), "second");
    // No temporary file is left beside it.
    EXPECT_EQ(std::distance(fs::directory_iterator(path.parent_path()), fs::directory_iterator()), 1);
}

TEST_F(AtomicFileTest, AWriteRemovesTemporariesThatKilledWritersLeftBehindLongAgo) {
    const auto path = folder / "settings.json";
    AtomicFile::write(path, "first");
    const auto old = folder / ".settings.json.a1b2c3";
    const auto fresh = folder / ".settings.json.d4e5f6";  // perhaps another writer at work now
    const auto otherFile = folder / ".summary.json.a1b2c3";
    for (const auto& leftover : {old, fresh, otherFile}) std::ofstream(leftover) << "half";
    fs::last_write_time(old, fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::last_write_time(otherFile, fs::file_time_type::clock::now() - std::chrono::hours(1));
    AtomicFile::write(path, "second");
    EXPECT_FALSE(fs::exists(old));
    EXPECT_TRUE(fs::exists(fresh));
    EXPECT_TRUE(fs::exists(otherFile));
}

TEST_F(AtomicFileTest, MissingFileReadsAsNothing) {
    EXPECT_EQ(AtomicFile::read(folder / "absent.json"), std::nullopt);
}

TEST_F(AtomicFileTest, AFailedWriteLeavesTheOldFile) {
    if (::geteuid() == 0) GTEST_SKIP() << "root ignores folder permissions, so a write cannot be made to fail";
    const auto path = folder / "history.json";
    AtomicFile::write(path, "old");
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_THROW(AtomicFile::write(path, "new"), FileError);
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_EQ(AtomicFile::read(path), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST_F(AtomicFileTest, AFailedWriteIntoAFolderThatIsAFileNamesThePath) {
    std::ofstream(folder / "blocker") << "x";
    EXPECT_THAT([&] { AtomicFile::write(folder / "blocker" / "file.json", "data"); },
                ::testing::ThrowsMessage<FileError>(::testing::HasSubstr("blocker")));
}

TEST_F(AtomicFileTest, UnreadableExistingFileIsAnError) {
    fs::create_directory(folder / "a-folder");
    EXPECT_THROW(AtomicFile::read(folder / "a-folder"), FileError);
}
