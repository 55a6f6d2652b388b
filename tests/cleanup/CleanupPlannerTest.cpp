// The planner's safety rules, their order and texts, nested selections and the fixed checks.
#include "cleanup/CleanupPlanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace corvel {
namespace {

using ::testing::ElementsAre;

const TimePoint now = *ISO8601::parse("2026-11-02T09:30:00Z");

CleanupCandidate item(const std::string& path, CleanupRisk risk, SpaceCategory category = SpaceCategory::caches,
                      std::optional<std::string> application = std::nullopt, std::int64_t exclusive = 1000,
                      std::int64_t allocated = 4096) {
    CleanupCandidate candidate;
    candidate.path = path;
    candidate.name = path.substr(path.rfind('/') + 1);
    candidate.classification = {category, risk, std::move(application), "A rule said so.", std::nullopt};
    candidate.allocatedBytes = allocated;
    candidate.exclusiveBytes = exclusive;
    candidate.fileCount = 1;
    return candidate;
}

std::vector<std::string> paths(const std::vector<CleanupCandidate>& candidates) {
    std::vector<std::string> result;
    for (const auto& candidate : candidates) result.push_back(candidate.path);
    return result;
}

TEST(CleanupPlanner, TheFirstRuleThatFiresGivesTheReason) {
    const std::string gray = "Classified GRAY: Origin or impact unknown. Never offered for cleanup.";
    const std::string red =
        "Classified RED: Databases, Docker volumes, credentials, personal data, files in use or without backup. "
        "Never offered for cleanup.";
    const std::string oneEnv =
        "Contains 1 file(s) that look like credentials (.env\u2026). Recover what you still need before emptying; "
        "contents were not read.";
    const std::string project = "Project and database data is never removed based on size.";
    struct Case {
        const char* what;
        CleanupCandidate candidate;
        std::vector<std::string> credentials;
        std::vector<std::string> inUse;
        std::set<std::string> running;
        std::optional<std::string> reason;
    };
    const std::vector<Case> cases{
        {"gray beats a credential, a file in use and its running owner",
         item("/u/Downloads", CleanupRisk::gray, SpaceCategory::downloads, "Finder"),
         {"/u/Downloads/id_rsa"},
         {"/u/Downloads/a.iso"},
         {"Finder"},
         gray},
        {"red", item("/u/db", CleanupRisk::red, SpaceCategory::databases), {}, {}, {}, red},
        {"a credential inside beats a file in use",
         item("/u/app/node_modules", CleanupRisk::yellow, SpaceCategory::nodeModules, "npm / yarn / pnpm"),
         {"/u/app/node_modules/.env"},
         {"/u/app/node_modules/x.js"},
         {"npm / yarn / pnpm"},
         oneEnv},
        {"the ellipsis follows three names of four",
         item("/u/c", CleanupRisk::green),
         {"/u/c/a.key", "/u/c/b/.netrc", "/u/c/id_rsa", "/u/c/z.pem"},
         {},
         {},
         "Contains 4 file(s) that look like credentials (a.key, .netrc, id_rsa\u2026). Recover what you still need "
         "before emptying; contents were not read."},
        {"the selected item may itself be the credential",
         item("/u/c/.env", CleanupRisk::green),
         {"/u/c/.env"},
         {},
         {},
         oneEnv},
        {"a file in use beats a running owner",
         item("/u/.cache/slack", CleanupRisk::green, SpaceCategory::caches, "Slack"),
         {},
         {"/u/elsewhere", "/u/.cache/slack/Cache/data_1"},
         {"Slack"},
         "In use: /u/.cache/slack/Cache/data_1 is open by a running process."},
        {"the owner's name is compared ignoring case",
         item("/u/Library/Caches/com.tinyspeck.Slack", CleanupRisk::green, SpaceCategory::caches, "Slack"),
         {},
         {},
         {"slack"},
         "Slack is running. Quit it before cleaning its data."},
        {"a running owner beats the project rule",
         item("/u/p", CleanupRisk::green, SpaceCategory::projects, "Xcode"),
         {},
         {},
         {"XCODE"},
         "Xcode is running. Quit it before cleaning its data."},
        {"project data that a rule called green",
         item("/u/p", CleanupRisk::green, SpaceCategory::projects),
         {},
         {},
         {"Other"},
         project},
        {"database data that a rule called yellow",
         item("/u/d", CleanupRisk::yellow, SpaceCategory::databases),
         {},
         {},
         {},
         project},
        {"paths that only share a prefix are not inside",
         item("/u/.cache/ab", CleanupRisk::green, SpaceCategory::caches, "ab"),
         {"/u/.cache/abc/.env"},
         {"/u/.cache/abc/x"},
         {"abc"},
         std::nullopt},
        {"the item itself being open counts",
         item("/u/log.1", CleanupRisk::green),
         {},
         {"/u/log.1"},
         {},
         "In use: /u/log.1 is open by a running process."},
        {"an owner whose name is only part of a running one is not running",
         item("/u/.cache/code", CleanupRisk::green, SpaceCategory::caches, "code"),
         {},
         {},
         {"vscode", "codex"},
         std::nullopt},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(CleanupPlanner::exclusionReason(test.candidate, test.inUse, test.running, test.credentials),
                  test.reason)
            << test.what;
        const auto simulation =
            CleanupPlanner::simulate({test.candidate}, "Data", 0, test.inUse, test.running, test.credentials, now);
        EXPECT_EQ(simulation.eligible.size() + simulation.excluded.size(), 1u) << test.what;
        if (test.reason) {
            ASSERT_EQ(simulation.excluded.size(), 1u) << test.what;
            EXPECT_EQ(simulation.excluded[0], (CleanupExclusion{test.candidate, *test.reason})) << test.what;
        }
    }
}

TEST(CleanupPlanner, ASelectedFolderCountsOnceWithWhatIsInsideIt) {
    const auto caches = item("/Users/me/Library/Caches", CleanupRisk::yellow);
    const auto foo = item("/Users/me/Library/Caches/com.foo", CleanupRisk::green);
    const auto sibling = item("/Users/me/Library/CachesOld", CleanupRisk::green);
    const auto deep = item("/Users/me/Library/Caches/com.foo/a/b/c", CleanupRisk::green);
    const auto elsewhere = item("/x", CleanupRisk::green);
    struct Case {
        std::vector<CleanupCandidate> selection;
        std::vector<std::string> kept;
    };
    const std::vector<Case> cases{
        {{caches, foo}, {caches.path}},
        {{foo, caches}, {caches.path}},
        {{deep, foo}, {foo.path}},
        {{caches, caches}, {caches.path}},
        // "/" is the boundary: a longer name beside the folder is not inside it.
        {{caches, sibling}, {caches.path, sibling.path}},
        // What is kept stays in selection order, whatever the lengths.
        {{deep, elsewhere, caches}, {elsewhere.path, caches.path}},
        {{}, {}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(paths(CleanupPlanner::withoutNestedItems(test.selection)), test.kept);
        const auto simulation = CleanupPlanner::simulate(test.selection, "Data", 0, {}, {}, {}, now);
        std::vector<std::string> simulated = paths(simulation.eligible);
        for (const auto& exclusion : simulation.excluded) simulated.push_back(exclusion.candidate.path);
        EXPECT_THAT(simulated, ::testing::UnorderedElementsAreArray(test.kept));
    }
}

TEST(CleanupPlanner, ChecksFollowWhatWasExcludedAndWhatNeedsReview) {
    const std::string first = "Simulation only: no file was modified.";
    const std::string second =
        "Estimates use exclusive (unshared) bytes; APFS clones free nothing until every copy is gone.";
    const std::string review = "YELLOW items need manual review: they may be rebuilt slowly or needed by projects.";
    const auto green = item("/a", CleanupRisk::green);
    const auto yellow = item("/b", CleanupRisk::yellow);
    const auto otherYellow = item("/c", CleanupRisk::yellow);
    const auto gray = item("/d", CleanupRisk::gray);
    const auto red = item("/e", CleanupRisk::red);
    struct Case {
        std::vector<CleanupCandidate> selection;
        std::vector<std::string> checks;
    };
    const std::vector<Case> cases{
        {{}, {first, second}},
        {{green}, {first, second}},
        {{green, yellow, otherYellow}, {first, second, review}},
        {{gray, red, green}, {first, second, "2 item(s) excluded by safety rules."}},
        {{yellow, gray}, {first, second, "1 item(s) excluded by safety rules.", review}},
        // A yellow item that is excluded needs no review line.
        {{item("/f", CleanupRisk::yellow, SpaceCategory::databases)},
         {first, second, "1 item(s) excluded by safety rules."}},
    };
    for (const auto& test : cases)
        EXPECT_EQ(CleanupPlanner::simulate(test.selection, "Data", 0, {}, {}, {}, now).checks, test.checks);
}

TEST(CleanupSimulation, DerivedFiguresAtTheirBoundaries) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    struct Case {
        const char* what;
        std::vector<CleanupCandidate> selection;
        std::int64_t free;
        std::int64_t minimum, maximum, after;
    };
    const std::vector<Case> cases{
        {"empty selection", {}, 5000, 0, 0, 5000},
        {"nothing exclusive", {item("/a", CleanupRisk::green, SpaceCategory::caches, {}, 0, 4096)}, 0, 0, 4096, 0},
        {"excluded items count for nothing",
         {item("/a", CleanupRisk::green, SpaceCategory::caches, {}, 100, 200),
          item("/b", CleanupRisk::gray, SpaceCategory::caches, {}, 1000, 2000),
          item("/c", CleanupRisk::yellow, SpaceCategory::caches, {}, 10, 20)},
         7,
         110,
         220,
         117},
        {"up to the largest count",
         {item("/a", CleanupRisk::green, SpaceCategory::caches, {}, most - 10, most - 5),
          item("/b", CleanupRisk::green, SpaceCategory::caches, {}, 5, 5)},
         5,
         most - 5,
         most,
         most},
    };
    for (const auto& test : cases) {
        const auto simulation = CleanupPlanner::simulate(test.selection, "Data", test.free, {}, {}, {}, now);
        EXPECT_EQ(simulation.estimatedRecoverableMinimum(), test.minimum) << test.what;
        EXPECT_EQ(simulation.estimatedRecoverableMaximum(), test.maximum) << test.what;
        EXPECT_EQ(simulation.projectedFreeAfter(), test.after) << test.what;
    }
}

TEST(CleanupSimulation, EachSimulationIsNewAndItsJsonSaysSimulation) {
    const auto selection = std::vector{item("/a", CleanupRisk::green), item("/b", CleanupRisk::gray)};
    const auto one = CleanupPlanner::simulate(selection, "Macintosh HD", 42, {}, {}, {}, now);
    const auto two = CleanupPlanner::simulate(selection, "Macintosh HD", 42, {}, {}, {}, now);
    EXPECT_NE(one.id, two.id);
    EXPECT_THAT(one.id, ::testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_EQ(one.createdAt, now);
    EXPECT_EQ(one.volumeName, "Macintosh HD");
    EXPECT_EQ(one.volumeFreeBefore, 42);

    const Json json = one;
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items()) keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("id", "createdAt", "volumeName", "eligible", "excluded", "volumeFreeBefore", "checks",
                                  "mode"));
    EXPECT_EQ(json["mode"], "simulation");
    EXPECT_EQ(json["createdAt"], "2026-11-02T09:30:00Z");
    EXPECT_FALSE(json["eligible"][0].contains("lastModified"));
    EXPECT_EQ(json.get<CleanupSimulation>(), one);

    Json renamed = json;
    renamed["mode"] = "deletion";
    EXPECT_THROW(renamed.get<CleanupSimulation>(), DecodingError);
    renamed.erase("mode");
    EXPECT_THROW(renamed.get<CleanupSimulation>(), DecodingError);
}

}  // namespace
}  // namespace corvel
