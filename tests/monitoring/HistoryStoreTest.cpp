#include "monitoring/HistoryStore.h"

#include "common/AtomicFile.h"
#include "monitoring/MonitoringSamples.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using testing::day;
using testing::sample;
using testing::TemporaryFolder;

std::vector<std::string> filesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(HistoryStore, RecordsSavesAndReadsBackLazily) {
    TemporaryFolder folder;
    const auto file = HistoryStore::defaultURL(folder.root() / "data");
    EXPECT_EQ(file.filename(), "history.json");
    HistoryStore store(file);
    // No file yet is an empty history, not a problem.
    EXPECT_THAT(store.allSamples(), SizeIs(0));
    EXPECT_FALSE(store.loadProblem());
    EXPECT_EQ(store.retention(), 2592000);
    EXPECT_EQ(store.maxSamplesPerVolume(), 5000u);
    store.record({sample("A", 1, 10), sample("B", 1, 20)}, day(1));
    store.record({sample("A", 2, 9)}, day(2));
    EXPECT_THAT(store.samples("A"), ElementsAre(sample("A", 1, 10), sample("A", 2, 9)));

    HistoryStore reopened(file);
    EXPECT_THAT(reopened.allSamples(), SizeIs(3));
    EXPECT_THAT(reopened.samples("B"), ElementsAre(sample("B", 1, 20)));
    EXPECT_FALSE(reopened.loadProblem());

    // Loaded once: a file written behind the store's back after first use is not read again.
    AtomicFile::write(file, "[]");
    EXPECT_THAT(reopened.allSamples(), SizeIs(3));
}

TEST(HistoryStore, PrunesByAgeThenKeepsTheNewestPerVolume) {
    TemporaryFolder folder;
    HistoryStore store(folder.root() / "history.json", 30 * 86400.0, 3);
    store.record({sample("A", 0, 50), sample("B", 0, 50)}, day(0));
    store.record({sample("A", 10, 40), sample("A", 20, 30), sample("A", 29, 20)}, day(29));
    // Day 0 is 29 days old: still there, so A has four samples and loses its oldest.
    EXPECT_THAT(store.samples("A"), ElementsAre(sample("A", 10, 40), sample("A", 20, 30), sample("A", 29, 20)));
    EXPECT_THAT(store.samples("B"), SizeIs(1));
    // A day later, day 0 is more than 30 days old and goes on the next record.
    store.record({}, day(30.5));
    EXPECT_THAT(store.samples("B"), SizeIs(0));
    EXPECT_THAT(store.samples("A"), SizeIs(3));
}

TEST(HistoryStore, SamplesFromTheFutureSurviveAClockThatJumpedBack) {
    TemporaryFolder folder;
    HistoryStore store(folder.root() / "history.json");
    store.record({sample("A", 10, 40)}, day(10));
    store.record({sample("A", 2, 45)}, day(2));  // the clock now says day 2
    EXPECT_THAT(store.samples("A"), ElementsAre(sample("A", 2, 45), sample("A", 10, 40)));
    // It ages out normally once the clock passes it by the retention.
    store.record({}, day(41));
    EXPECT_THAT(store.samples("A"), SizeIs(0));
}

TEST(HistoryStore, AnUnreadableFileReadsAsEmptyAndIsKeptAsideBeforeTheNextSave) {
    for (const std::string contents : {"{not json", "{\"an\": \"object\"}", "[{\"volumeID\": 3}]"}) {
        TemporaryFolder folder;
        const auto file = folder.root() / "history.json";
        AtomicFile::write(file, contents);
        HistoryStore store(file);
        EXPECT_THAT(store.allSamples(), SizeIs(0)) << contents;
        ASSERT_TRUE(store.loadProblem()) << contents;
        EXPECT_THAT(*store.loadProblem(), HasSubstr("history.json"));
        EXPECT_THAT(filesIn(folder.root()), ElementsAre("history.json"));  // reading alone keeps it in place

        store.record({sample("A", 1, 10)}, *ISO8601::parse("2026-11-02T09:30:00Z"));
        EXPECT_THAT(filesIn(folder.root()), ElementsAre("history.json", "history.json.corrupt-20261102T093000Z"));
        EXPECT_EQ(AtomicFile::read(folder.root() / "history.json.corrupt-20261102T093000Z"), contents);
        EXPECT_THAT(HistoryStore(file).allSamples(), ElementsAre(sample("A", 1, 10)));
    }
}

TEST(HistoryStore, AFailedSaveThrowsAndKeepsTheSamplesInMemory) {
    TemporaryFolder folder;
    folder.write("blocker", "a file where the data folder should be");
    HistoryStore store(folder.root() / "blocker" / "history.json");
    EXPECT_THROW(store.record({sample("A", 1, 10)}, day(1)), FileError);
    EXPECT_THAT(store.samples("A"), ElementsAre(sample("A", 1, 10)));
}

}  // namespace
}  // namespace corvel
