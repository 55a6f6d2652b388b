// What `cleanup suggest` proposes from a scan: known, regenerable, untouched items, biggest first.
#include "cleanup/CleanupSuggester.h"

#include "space/SpaceScanner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>

namespace corvel {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::Field;
using testing::TemporaryFolder;

const TimePoint now = *ISO8601::parse("2026-11-02T09:30:00Z");
constexpr std::chrono::seconds month = std::chrono::hours(24 * 30);

TEST(CleanupSuggester, ReadsAgesInHoursDaysAndWeeks) {
    struct Case {
        const char* text;
        std::optional<std::chrono::seconds> age;
    };
    for (const auto& [text, age] :
         {Case{"30d", month}, Case{"12h", std::chrono::hours(12)}, Case{"2w", std::chrono::hours(24 * 14)},
          Case{"0", 0s}, Case{"0d", 0s}, Case{"36500d", std::chrono::hours(24 * 36500)}, Case{"", {}}, Case{"d", {}},
          Case{"30", {}}, Case{"30m", {}}, Case{"-1d", {}}, Case{"1.5d", {}}, Case{"3 d", {}},
          Case{"99999999999999w", {}}, Case{"40000d", {}}})
        EXPECT_EQ(CleanupSuggester::parseAge(text), age) << text;
}

TEST(CleanupSuggester, ProposesOnlyKnownUntouchedItemsAndLooksInsideTheRest) {
    using Step = CleanupSuggester::Step;
    struct Case {
        const char* what;
        CleanupRisk risk;
        std::optional<TimePoint> modified;
        std::int64_t exclusive;
        bool fullyRead;
        std::chrono::seconds age;
        Step step;
    };
    const std::vector<Case> cases{
        {"green and old", CleanupRisk::green, now - month - 1s, 10, true, month, Step::propose},
        {"yellow exactly at the age", CleanupRisk::yellow, now - month, 10, true, month, Step::propose},
        {"green but touched a second too late", CleanupRisk::green, now - month + 1s, 10, true, month,
         Step::lookInside},
        {"gray however old", CleanupRisk::gray, now - 10 * month, 10, true, month, Step::lookInside},
        {"red however old", CleanupRisk::red, now - 10 * month, 10, true, month, Step::lookInside},
        {"nothing to free", CleanupRisk::green, now - 10 * month, 0, true, month, Step::lookInside},
        {"no date proves nothing", CleanupRisk::green, std::nullopt, 10, true, month, Step::lookInside},
        {"no date with no age asked", CleanupRisk::green, std::nullopt, 10, true, 0s, Step::propose},
        {"modified in the future", CleanupRisk::green, now + 1h, 10, true, 0s, Step::lookInside},
        {"not fully read", CleanupRisk::green, now - 10 * month, 10, false, month, Step::leave},
    };
    for (const auto& test : cases)
        EXPECT_EQ(CleanupSuggester::step(test.risk, test.modified, test.exclusive, test.fullyRead, now, test.age),
                  test.step)
            << test.what;
}

class SuggestionTree : public ::testing::Test {
protected:
    // Makes every file and folder under `relative` look last changed `age` ago.
    void age(const std::string& relative, std::chrono::seconds age) const {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch() - age).count();
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        const auto root = folder_.root() / relative;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
            ASSERT_EQ(::utimensat(AT_FDCWD, entry.path().c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << entry.path();
        ASSERT_EQ(::utimensat(AT_FDCWD, root.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    std::vector<CleanupSuggestion> suggest(std::chrono::seconds minimumAge, std::size_t count = 20) const {
        ScanProgress progress;
        const ScanTree tree = SpaceScanner::scan(folder_.path(), {}, progress, {});
        const SpaceCatalog catalog(folder_.path(), {folder_.path("dev")}, Platform::linux);
        return CleanupSuggester::fromScan(tree, catalog, now, {minimumAge, count});
    }

    TemporaryFolder folder_;
};

TEST_F(SuggestionTree, OldKnownItemsBiggestFirstNeverGrayOrRedAndNothingInsideAProposal) {
    folder_.write(".cache/pip/wheels/a.whl", std::string(300'000, 'p'));
    folder_.write(".cache/pip/http/b", std::string(10'000, 'h'));
    folder_.write(".cache/fresh-tool/c.bin", std::string(500'000, 'f'));
    folder_.write("dev/app/node_modules/left-pad/index.js", std::string(100'000, 'n'));
    folder_.write("dev/app/src/main.ts", std::string(900'000, 's'));
    folder_.write("Downloads/old.iso", std::string(2'000'000, 'd'));
    folder_.write("Downloads/unpacked/node_modules/x/y.js", std::string(400'000, 'y'));
    age(".cache", 2 * month);
    age("dev", 3 * month);
    age("Downloads", 4 * month);
    age(".cache/fresh-tool", 1h);

    const auto suggestions = suggest(month);
    // A project folder is red and Downloads gray: the walk looks inside the project and finds its
    // node_modules, while everything under Downloads, node_modules included, stays gray.
    EXPECT_THAT(suggestions, ElementsAre(Field(&CleanupSuggestion::candidate,
                                               Field(&CleanupCandidate::path, folder_.path(".cache/pip"))),
                                         Field(&CleanupSuggestion::candidate,
                                               Field(&CleanupCandidate::path, folder_.path("dev/app/node_modules")))));
    const auto& pip = suggestions[0];
    EXPECT_EQ(pip.candidate.fileCount, 2);
    EXPECT_GE(pip.candidate.exclusiveBytes, 310'000);
    EXPECT_EQ(pip.candidate.lastModified, now - 2 * month);
    EXPECT_EQ(pip.candidate.name, "pip");
    EXPECT_EQ(pip.why, "Package Managers, green (pip): untouched for 60 days");
    EXPECT_EQ(suggestions[1].why, "Node Modules, yellow (npm / yarn / pnpm): untouched for 90 days");

    // With no age asked, the whole .cache folder is one proposal (the biggest), and nothing
    // inside it is proposed a second time; the count cuts the list.
    const auto all = suggest(0s, 2);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].candidate.path, folder_.path(".cache"));
    EXPECT_EQ(all[1].candidate.path, folder_.path("dev/app/node_modules"));
}

}  // namespace
}  // namespace corvel
