#include "common/JSONHistory.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

struct Entry {
    int number = 0;
    std::string text;
    bool operator==(const Entry&) const = default;
};
CORVEL_JSON_RECORD(Entry, number, text)

TEST(JSONHistory, KeepsTheNewestUpToTheLimitAcrossReloads) {
    TemporaryFolder folder;
    const auto file = folder.root() / "nested" / "history.json";
    {
        JSONHistory<Entry> history(file, 3);
        for (int i = 1; i <= 5; ++i) history.append({i, "entry " + std::to_string(i)});
        EXPECT_THAT(history.all(), ElementsAre(Entry{3, "entry 3"}, Entry{4, "entry 4"}, Entry{5, "entry 5"}));
    }
    JSONHistory<Entry> reloaded(file, 3);
    EXPECT_EQ(reloaded.all().front(), (Entry{3, "entry 3"}));
    EXPECT_FALSE(reloaded.loadProblem());
    // A smaller limit than the file holds keeps the newest on load too.
    JSONHistory<Entry> smaller(file, 2);
    EXPECT_THAT(smaller.all(), ElementsAre(Entry{4, "entry 4"}, Entry{5, "entry 5"}));
}

TEST(JSONHistory, AnUnusableFileReadsAsEmptyAndIsReplacedByTheNextAppend) {
    TemporaryFolder folder;
    for (const std::string contents : {"{not json", "[{\"number\": \"seven\"}]", "{\"number\": 1}", "[1e999999]"}) {
        const auto file = folder.write("history.json", contents);
        JSONHistory<Entry> history(file, 10);
        EXPECT_TRUE(history.all().empty()) << contents;
        EXPECT_THAT(history.loadProblem().value_or(""), HasSubstr(file)) << contents;
        history.append({1, "fresh"});
        JSONHistory<Entry> reloaded(file, 10);
        EXPECT_THAT(reloaded.all(), ElementsAre(Entry{1, "fresh"})) << contents;
    }
}

TEST(JSONHistory, AFailedWriteIsReportedAndTheItemStaysInMemory) {
    TemporaryFolder folder;
    const auto file = folder.makeFolder("history.json");  // a folder where the file should be
    JSONHistory<Entry> history(file, 10);
    EXPECT_THAT(history.loadProblem().value_or(""), HasSubstr("not a regular file"));
    EXPECT_THROW(history.append({1, "kept"}), FileError);
    EXPECT_THAT(history.all(), ElementsAre(Entry{1, "kept"}));
}

TEST(AtomicFileRead, RefusesWhatIsNotASmallRegularFile) {
    TemporaryFolder folder;
    const auto fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_THROW(AtomicFile::read(fifo), FileError);         // would block forever on open or read
    EXPECT_THROW(AtomicFile::read("/dev/zero"), FileError);  // would never end
    const auto big = folder.write("big", std::string(100, 'x'));
    EXPECT_THROW(AtomicFile::read(big, 99), FileError);
    EXPECT_EQ(AtomicFile::read(big, 100)->size(), 100u);
    EXPECT_FALSE(AtomicFile::read(folder.path("missing")));
}

}  // namespace
}  // namespace corvel
