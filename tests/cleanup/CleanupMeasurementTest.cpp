// Measuring selected paths: folders through the scanner, files by their own facts, and every path
// that cannot take part named with its reason.
#include "cleanup/CleanupMeasurement.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using testing::TemporaryFolder;

TEST(CleanupMeasurement, MeasuresFoldersAndFilesAndNamesWhatItCannot) {
    TemporaryFolder folder;
    folder.write("home/.cache/tool/blob", std::string(100'000, 'b'));
    folder.write("home/.cache/tool/nested/deploy_private_key.pem", "k");
    folder.write("home/.cache/tool/readme.md", "password: none");
    const auto key = folder.write("home/.ssh/id_ed25519", "k");
    const auto linked = folder.write("home/linked.bin", std::string(50'000, 'l'));
    ASSERT_EQ(::link(linked.c_str(), folder.path("home/other-name.bin").c_str()), 0);

    const SpaceCatalog catalog(folder.path("home"), {}, Platform::linux);
    ScanProgress progress;
    const auto measured = CleanupMeasurement::measure(
        {folder.path("home/.cache/tool/"), folder.path("nowhere"), key, linked, folder.path("home/.cache/tool/blob/x")},
        catalog, progress, {});

    ASSERT_EQ(measured.candidates.size(), 3u);
    const auto& tool = measured.candidates[0];
    EXPECT_EQ(tool.path, folder.path("home/.cache/tool"));  // the trailing "/" is gone
    EXPECT_EQ(tool.name, "tool");
    EXPECT_EQ(tool.fileCount, 3);
    EXPECT_GE(tool.allocatedBytes, 100'000);
    EXPECT_EQ(tool.exclusiveBytes, tool.allocatedBytes);
    EXPECT_TRUE(tool.lastModified.has_value());
    EXPECT_EQ(tool.classification.risk, CleanupRisk::green);

    const auto& ssh = measured.candidates[1];
    EXPECT_EQ(ssh.fileCount, 1);
    EXPECT_EQ(ssh.classification.category, SpaceCategory::credentials);
    // The other name keeps the blocks: removing this one frees nothing.
    const auto& hardLinked = measured.candidates[2];
    EXPECT_GT(hardLinked.allocatedBytes, 0);
    EXPECT_EQ(hardLinked.exclusiveBytes, 0);

    EXPECT_THAT(measured.credentialPaths,
                ElementsAre(folder.path("home/.cache/tool/nested/deploy_private_key.pem"), key));
    EXPECT_THAT(measured.problems,
                ElementsAre(CleanupPathProblem{folder.path("nowhere"), "no such file or folder"},
                            CleanupPathProblem{folder.path("home/.cache/tool/blob/x"), "no such file or folder"}));
    EXPECT_TRUE(measured.warnings.empty());
    EXPECT_FALSE(measured.wasCancelled);
}

TEST(CleanupMeasurement, ACancelledMeasurementSaysSo) {
    TemporaryFolder folder;
    folder.write("a/b", "x");
    const SpaceCatalog catalog(folder.path(), {}, Platform::linux);
    ScanProgress progress;
    const auto measured =
        CleanupMeasurement::measure({folder.path("a"), folder.path("a")}, catalog, progress, [] { return true; });
    EXPECT_TRUE(measured.wasCancelled);
    EXPECT_TRUE(measured.candidates.empty());
}

}  // namespace
}  // namespace corvel
