#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "FakeFileSystem.h"
#include "SpaceTestFiles.h"
#include "space/DirectorySizer.h"

namespace corvel {
namespace {

using spacetest::blocksOf;
using spacetest::FakeFileSystem;

const TimePoint now = fileTime(1'800'000'000, 0);

std::optional<DirectoryMeasurement> measure(const std::string& location,
                                            const std::function<bool()>& isCancelled = nullptr) {
    ScanProgress progress;
    return DirectorySizer::measure(location, now, progress, isCancelled);
}

std::optional<DirectoryMeasurement> measure(FakeFileSystem& files, const std::string& location,
                                            const std::function<bool()>& isCancelled = nullptr) {
    ScanProgress progress;
    return DirectorySizer::measure(location, now, progress, isCancelled, files);
}

// One staged tree, measured at each kind of location.
TEST(DirectorySizerOnDisk, MeasuresAFileAFolderOrALinksTargetWithoutFollowingLinksInside) {
    spacetest::TemporaryFolder folder;
    folder.write("outside/huge.bin", std::string(400'000, 'h'));
    folder.write("cache/a.bin", std::string(10'000, 'a'));
    folder.write("cache/.hidden/b.bin", std::string(20'000, 'b'));
    folder.write("cache/deep/er/c.bin", "c");
    ASSERT_EQ(symlink(folder.path("outside").c_str(), folder.path("cache/link-dir").c_str()), 0);
    ASSERT_EQ(symlink(folder.path("outside/huge.bin").c_str(), folder.path("cache/link").c_str()), 0);
    ASSERT_EQ(symlink("outside", folder.path(".npm").c_str()), 0);
    ASSERT_EQ(symlink("missing-target", folder.path("dangling").c_str()), 0);

    // Nothing at the location gives no measurement rather than zero.
    EXPECT_FALSE(measure(folder.path("Android/Sdk")));
    EXPECT_FALSE(measure(folder.path("dangling")));
    const std::int64_t aBytes = blocksOf(folder.path("cache/a.bin"));
    EXPECT_GE(aBytes, 10'000);
    EXPECT_EQ(measure(folder.path("cache/a.bin")), (DirectoryMeasurement{aBytes, 1, now, false, {}}));
    // Hidden files count; the links inside are not followed.
    EXPECT_EQ(measure(folder.path("cache")),
              (DirectoryMeasurement{
                  aBytes + blocksOf(folder.path("cache/.hidden/b.bin")) + blocksOf(folder.path("cache/deep/er/c.bin")),
                  3,
                  now,
                  false,
                  {}}));
    // A location that is itself a link is measured at its target.
    EXPECT_EQ(measure(folder.path(".npm")),
              (DirectoryMeasurement{blocksOf(folder.path("outside/huge.bin")), 1, now, false, {}}));
}

TEST(DirectorySizerWalk, AnUnreadableSubfolderIsCountedAndDoesNotStopTheSurvey) {
    FakeFileSystem files;
    files.directory("/cache")
        .deniedDirectory("/cache/locked")
        .file("/cache/locked/x", 10, {{0, 9}})
        .file("/cache/z-after", 100, {{100, 199}});
    const auto measurement = measure(files, "/cache");
    ASSERT_TRUE(measurement);
    EXPECT_EQ(measurement->fileCount, 1);
    EXPECT_EQ(measurement->allocatedBytes, 100);
    EXPECT_EQ(measurement->failures.folders(), 1);
    EXPECT_THAT(measurement->failures.deniedFolders, ::testing::ElementsAre("/cache/locked"));
}

TEST(DirectorySizerWalk, CountsEveryCloneInFullAndStaysOnTheLocationsDevice) {
    FakeFileSystem files;
    files.directory("/cache")
        .file("/cache/a", 100, {{0, 99}}, 0)
        .file("/cache/a-clone", 100, {{0, 99}}, 0)
        .directory("/cache/mounted", 7, 7)
        .file("/cache/mounted/big", 1000, {{500, 1499}})
        .directory("/cache/bound", 1, 8)
        .file("/cache/bound/again", 1000, {{500, 1499}});
    const auto measurement = measure(files, "/cache");
    ASSERT_TRUE(measurement);
    EXPECT_EQ(*measurement, (DirectoryMeasurement{200, 2, now, false, {}}));
}

TEST(DirectorySizerWalk, CancellingDuringALargeFolderReturnsPartialTotals) {
    FakeFileSystem files;
    files.directory("/cache");
    constexpr int fileCount = 5'000;
    for (int i = 0; i < fileCount; ++i) files.file("/cache/f" + std::to_string(i), 10, {{0, 9}});
    int polls = 0;
    // The first poll comes before the folder is read; the next ones while its files are counted.
    const auto measurement = measure(files, "/cache", [&] { return ++polls == 3; });
    ASSERT_TRUE(measurement);
    EXPECT_TRUE(measurement->wasCancelled);
    EXPECT_EQ(measurement->fileCount, 2 * DirectorySizer::cancellationPollInterval);
    EXPECT_EQ(measurement->allocatedBytes, measurement->fileCount * 10);
    EXPECT_EQ(measurement->measuredAt, now);
}

TEST(DirectorySizerJson, EncodesTheMeasurementWithFieldNames) {
    DirectoryMeasurement measurement{4096, 3, now, true, {}};
    measurement.failures.folderFailed(EACCES, "/cache/locked");
    const Json json = measurement;
    EXPECT_EQ(json.dump(), R"({"allocatedBytes":4096,"fileCount":3,"measuredAt":"2027-01-15T08:00:00Z",)"
                           R"("wasCancelled":true,"failures":{"byError":[{"errorNumber":13,"reason":")" +
                               std::string(std::strerror(EACCES)) +
                               R"(","folders":1,"files":0}],)"
                               R"("deniedFolders":["/cache/locked"]}})");
    EXPECT_EQ(json.get<DirectoryMeasurement>(), measurement);
}

}  // namespace
}  // namespace corvel
