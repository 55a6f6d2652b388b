#include "common/AtomicFile.h"

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
    void SetUp() override {
        folder = fs::temp_directory_path() / ("velmora-atomic-" + std::to_string(::getpid()) + "-" +
                                              ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
    }
    void TearDown() override {
        std::error_code ec;
        fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(folder, ec);
    }
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
        return names;
    }
    fs::path folder;
};
}  // namespace

TEST_F(AtomicFileTest, WritesCreatingFoldersAndReplacesWhole) {
    const auto path = folder / "nested" / "settings.json";
    AtomicFile::write(path, "first version, quite long");
    EXPECT_EQ(AtomicFile::read(path), "first version, quite long");
    AtomicFile::write(path, "second");
    EXPECT_EQ(AtomicFile::read(path), "second");
    // No temporary file is left beside it.
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : fs::directory_iterator(path.parent_path())) ++count;
    EXPECT_EQ(count, 1u);
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
    EXPECT_EQ(entries().size(), 1u);
}

TEST_F(AtomicFileTest, AFailedWriteIntoAFolderThatIsAFileNamesThePath) {
    fs::create_directories(folder);
    std::ofstream(folder / "blocker") << "x";
    try {
        AtomicFile::write(folder / "blocker" / "file.json", "data");
        FAIL() << "wrote below a plain file";
    } catch (const FileError& error) {
        EXPECT_NE(std::string(error.what()).find("blocker"), std::string::npos) << error.what();
    }
}

TEST_F(AtomicFileTest, UnreadableExistingFileIsAnError) {
    fs::create_directories(folder / "a-folder");
    EXPECT_THROW(AtomicFile::read(folder / "a-folder"), FileError);
}
