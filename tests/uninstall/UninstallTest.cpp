#include "uninstall/LegacyDataMigration.h"
#include "uninstall/UninstallPlanner.h"

#include "common/AtomicFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const TimePoint noon = *ISO8601::parse("2026-11-02T12:00:00Z");

VelmoraLocations linuxHome(const testing::TemporaryFolder& home, std::string dataFolder = ".local/share/velmora") {
    VelmoraLocations locations;
    locations.platform = Platform::linux;
    locations.home = home.root();
    locations.dataFolder = home.root() / dataFolder;
    locations.dataFolderIsDefault = dataFolder == ".local/share/velmora";
    return locations;
}

std::string readText(const std::string& path) {
    return AtomicFile::read(path).value_or("(missing)");
}

bool exists(const testing::TemporaryFolder& home, const std::string& relative) {
    std::error_code error;
    return fs::exists(fs::symlink_status(home.root() / relative, error));
}

TEST(Uninstall, RemovesEverythingVelmoraMadeAndNothingBesideIt) {
    testing::TemporaryFolder home;
    const std::vector<std::string> ours{
        ".local/share/velmora/consent.json",        ".local/share/velmora/history.json",
        ".local/share/velmora/exports/report.json", ".config/velmora/settings.json",
        ".config/autostart/velmora-agent.desktop",  ".cache/velmora/scan/index.bin",
        ".local/share/corvel/history.json",
    };
    const std::vector<std::string> theirs{
        ".local/share/notes.txt", ".config/autostart/editor.desktop",        ".config/velmora-notes.txt",
        ".cache/other/velmora",   ".local/share/corvel-backup/history.json",
    };
    for (const auto& path : ours) home.write(path, "12345");
    for (const auto& path : theirs) home.write(path, "mine");
    fs::create_symlink(home.root() / ".local/share/notes.txt", home.root() / ".local/share/velmora/link");

    const auto plan = UninstallPlanner::plan(linuxHome(home));
    EXPECT_THAT(plan.items, Contains(AllOf(Field(&UninstallItem::kind, KeptKind::cache),
                                           Field(&UninstallItem::bytes, 5), Field(&UninstallItem::fileCount, 1))));
    EXPECT_THAT(plan.items, Contains(Field(&UninstallItem::kind, KeptKind::legacyData)));
    EXPECT_THAT(plan.items, Contains(Field(&UninstallItem::kind, KeptKind::agentRegistration)));
    EXPECT_EQ(plan.totalBytes, 5 * static_cast<std::int64_t>(ours.size()));
    EXPECT_THAT(plan.foreignFiles, IsEmpty());

    const auto result = UninstallPlanner::execute(plan);
    EXPECT_THAT(result.left, IsEmpty());
    EXPECT_EQ(result.removedBytes, plan.totalBytes);
    for (const auto& path : ours) EXPECT_FALSE(exists(home, path)) << path;
    EXPECT_FALSE(exists(home, ".local/share/velmora"));
    // The link went, not what it pointed at; the user's own files stay.
    for (const auto& path : theirs) EXPECT_TRUE(exists(home, path)) << path;
}

TEST(Uninstall, InANamedDataFolderOnlyVelmorasFilesGo) {
    testing::TemporaryFolder home;
    home.write("work/consent.json", "{}");
    home.write("work/.history.json.a1B2c3", "{");  // an interrupted atomic write
    home.write("work/thesis.tex", "mine");
    home.write("work/.history.json.bak", "mine");
    const auto plan = UninstallPlanner::plan(linuxHome(home, "work"));
    EXPECT_THAT(plan.foreignFiles,
                UnorderedElementsAre(home.path("work/thesis.tex"), home.path("work/.history.json.bak")));
    UninstallPlanner::execute(plan);
    EXPECT_FALSE(exists(home, "work/consent.json"));
    EXPECT_FALSE(exists(home, "work/.history.json.a1B2c3"));
    EXPECT_TRUE(exists(home, "work/thesis.tex"));
    EXPECT_TRUE(exists(home, "work/.history.json.bak"));
}

TEST(Uninstall, WhatCannotBeRemovedIsListedAndTheRestStillGoes) {
    testing::TemporaryFolder home;
    home.write(".local/share/velmora/history.json", "1");
    home.write(".local/share/velmora/exports/stuck.json", "2");
    home.write(".cache/velmora/a", "3");
    const auto stuck = home.path(".local/share/velmora/exports/stuck.json");
    const auto result = UninstallPlanner::execute(UninstallPlanner::plan(linuxHome(home)), [&](const fs::path& path) {
        if (path == stuck) return std::make_error_code(std::errc::permission_denied);
        return UninstallPlanner::removeOne(path);
    });
    EXPECT_THAT(result.left, ElementsAre(Field(&UninstallLeftover::path, stuck)));
    EXPECT_TRUE(exists(home, ".local/share/velmora/exports/stuck.json"));
    EXPECT_FALSE(exists(home, ".local/share/velmora/history.json"));
    EXPECT_FALSE(exists(home, ".cache/velmora"));
}

TEST(LegacyDataMigration, MovesEarlierDataOnceWithoutReplacingNewerFiles) {
    testing::TemporaryFolder home;
    const auto locations = linuxHome(home);
    home.write(".local/share/velmora/history.json", "current");
    home.write(".local/share/corvel/history.json", "older");
    home.write(".local/share/corvel/consent.json", "only-here");
    home.write(".local/share/macdevcorvel/exports/a.json", "oldest");
    fs::last_write_time(home.path(".local/share/corvel/history.json"),
                        fs::last_write_time(home.path(".local/share/velmora/history.json")) - std::chrono::hours(1));

    const auto record = LegacyDataMigration::atStart(locations, noon);
    ASSERT_TRUE(record);
    EXPECT_THAT(record->moved, UnorderedElementsAre(home.path(".local/share/corvel/consent.json"),
                                                    home.path(".local/share/macdevcorvel/exports")));
    EXPECT_THAT(record->kept, ElementsAre(home.path(".local/share/corvel/history.json")));
    EXPECT_EQ(readText(home.path(".local/share/velmora/history.json")), "current");
    EXPECT_EQ(readText(home.path(".local/share/velmora/consent.json")), "only-here");
    EXPECT_TRUE(exists(home, ".local/share/velmora/exports/a.json"));
    EXPECT_TRUE(exists(home, ".local/share/corvel/history.json"));  // kept where the person can find it
    EXPECT_FALSE(exists(home, ".local/share/macdevcorvel"));        // emptied, so gone

    // Recorded, so never again; and never into a folder someone named.
    EXPECT_TRUE(exists(home, ".local/share/velmora/legacy-migration.json"));
    home.write(".local/share/corvel/new.json", "later");
    EXPECT_FALSE(LegacyDataMigration::atStart(locations, noon));
    EXPECT_FALSE(LegacyDataMigration::atStart(linuxHome(home, "elsewhere"), noon));
    EXPECT_FALSE(exists(home, ".local/share/velmora/new.json"));
}

}  // namespace
}  // namespace corvel
