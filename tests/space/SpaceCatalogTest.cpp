#include "space/SpaceCatalog.h"

#include "common/Text.h"
#include "support/Golden.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

using namespace corvel;

namespace {

using C = SpaceCategory;
using R = CleanupRisk;

const SpaceCatalog& macCatalog() {
    static const SpaceCatalog catalog("/Users/me");
    return catalog;
}

}  // namespace

// The probe paths live beside their reviewed verdicts in the golden file, grouped by catalogue:
// adding a case is adding a path there and rewriting the file (VELMORA_UPDATE_GOLDEN=1). Every
// verdict must also expand to the classification classify gives, and read back from its JSON.
TEST(SpaceCatalogTest, EveryProbeMatchesTheReviewedCopy) {
    const Json reviewed = Json::parse(corvel::testing::readFixture("golden/space/catalog.json"));
    Json rendered = Json::array();
    for (const auto& group : reviewed) {
        const auto roots = group.at("projectRoots").get<std::vector<std::string>>();
        const SpaceCatalog catalog(group.at("home").get<std::string>(), roots,
                                   enumFromRaw<Platform>(group.at("platform").get<std::string>()).value());
        Json probes = Json::array();
        for (const auto& probe : group.at("probes")) {
            const auto path = probe.at("path").get<std::string>();
            const bool isDirectory = probe.at("isDirectory").get<bool>();
            const auto classification = catalog.classify(path, isDirectory);
            const auto verdict = catalog.verdict(path, isDirectory);
            EXPECT_EQ(verdict.category, classification.category) << path;
            EXPECT_EQ(verdict.risk, classification.risk) << path;
            EXPECT_EQ(catalog.expand(verdict, path), classification) << path;
            const Json encoded = classification;
            EXPECT_EQ(encoded.get<SpaceClassification>(), classification) << path;
            probes.push_back({{"path", path}, {"isDirectory", isDirectory}, {"classification", encoded}});
        }
        rendered.push_back({{"home", group.at("home")},
                            {"projectRoots", roots},
                            {"platform", group.at("platform")},
                            {"probes", probes}});
    }
    corvel::testing::expectGolden("space/catalog.json", rendered);
}

TEST(CleanupRiskTest, SortsBySeverityAndOnlyGreenAndYellowAreEligible) {
    std::vector risks{R::red, R::gray, R::green, R::yellow};
    std::sort(risks.begin(), risks.end());
    EXPECT_THAT(risks, ::testing::ElementsAre(R::green, R::yellow, R::gray, R::red));
    EXPECT_TRUE(R::red >= R::red && R::gray >= R::yellow && R::gray > R::yellow && !(R::red < R::gray));
    std::vector<R> eligible;
    for (const auto risk : allCases<CleanupRisk>())
        if (isCleanupEligible(risk)) eligible.push_back(risk);
    EXPECT_THAT(eligible, ::testing::ElementsAre(R::green, R::yellow));
}

TEST(SpaceClassificationTest, DecodingRejectsMissingOrWrongKeysAndHashCoversEveryField) {
    for (const char* bad :
         {R"({"category":"Caches","risk":"green"})", R"({"category":"Cache","risk":"green","rationale":"x"})",
          R"({"category":"Caches","risk":3,"rationale":"x"})"})
        EXPECT_THROW((void)Json::parse(bad).get<SpaceClassification>(), DecodingError) << bad;
    EXPECT_EQ(Json::parse(R"({"category":"Caches","risk":"green","rationale":"x","hint":null})")
                  .get<SpaceClassification>()
                  .hint,
              std::nullopt);

    const SpaceClassification base{C::caches, R::green, "App", "Why.", std::nullopt};
    const std::hash<SpaceClassification> hash;
    auto withEmptyHint = base;
    withEmptyHint.hint = "";  // an empty hint is not an absent one
    auto withoutOwner = base;
    withoutOwner.application.reset();
    auto yellow = base;
    yellow.risk = R::yellow;
    for (const auto& changed : {withEmptyHint, withoutOwner, yellow}) {
        EXPECT_NE(changed, base);
        EXPECT_NE(hash(changed), hash(base));
    }
    EXPECT_EQ(hash(SpaceClassification(base)), hash(base));
}

TEST(SpaceCatalogTest, HomeLosesOneTrailingSlash) {
    const SpaceCatalog withSlash("/Users/me/");
    EXPECT_EQ(withSlash.home(), "/Users/me");
    EXPECT_EQ(withSlash, macCatalog());
    EXPECT_NE(SpaceCatalog("/Users/me", {"/a", "/b"}), SpaceCatalog("/Users/me", {"/b", "/a"}));
}

TEST(SpaceCatalogTest, AppNameTakesTheLastPieceOfReverseDomainNames) {
    const std::pair<const char*, const char*> rows[] = {
        {"com.apple.Safari", "Safari"},
        {"org.mozilla.firefox", "firefox"},
        {"group.com.docker", "docker"},
        {"io..github..tool", "tool"},  // empty pieces do not count
        {"com.foo", "com.foo"},
        {"Homebrew", "Homebrew"},
        {"uk.co.bbc.iplayer", "uk.co.bbc.iplayer"},  // not a known top level
        {"Com.apple.Safari", "Com.apple.Safari"},    // case matters
        {"", ""},
    };
    for (const auto& [name, app] : rows) EXPECT_EQ(SpaceCatalog::appName(name), app) << name;
}

// Names are lower-cased before the database table is searched.
TEST(SpaceCatalogTest, DatabaseDirectoriesAreLowerCase) {
    for (const auto name : SpaceCatalog::databaseDirectories()) EXPECT_EQ(name, toLower(name));
}

TEST(SpaceCatalogTest, FirmlinkedAndLinuxCataloguesAgreeOnMacPaths) {
    const SpaceCatalog linuxAtMacHome("/Users/me", {}, Platform::linux);
    for (const char* path : {"/Users/me/.ssh", "/Users/me/Library/Caches/com.apple.Safari", "/Applications/Xcode.app",
                             "/opt/homebrew/var/postgresql@16", "/private/var/folders/x", "/Users/me/.Trash",
                             "/System/Library", "/Library/Developer/CoreSimulator/x", "/Volumes/X"}) {
        EXPECT_EQ(macCatalog().classify(std::string("/System/Volumes/Data") + path, true),
                  macCatalog().classify(path, true))
            << path;
        EXPECT_EQ(linuxAtMacHome.classify(path, true), macCatalog().classify(path, true)) << path;
    }
}

// ---------------------------------------------------------------- the compact verdict

TEST(SpaceCatalogTest, VerdictKeepsTheOwnerAsARangeOfThePath) {
    static_assert(sizeof(SpaceVerdict) <= 12, "a verdict is kept for every node of a scan");
    const std::string path = "/Users/me/Library/Caches/com.spotify.client";
    const auto verdict = macCatalog().verdict(path, true);
    EXPECT_EQ(path.substr(verdict.applicationOffset, verdict.applicationLength), "client");
    // Through the firmlink the range still points into the path that was passed.
    const std::string firmlinked = "/System/Volumes/Data" + path;
    const auto throughFirmlink = macCatalog().verdict(firmlinked, true);
    EXPECT_EQ(firmlinked.substr(throughFirmlink.applicationOffset, throughFirmlink.applicationLength), "client");
    // Rules with a fixed owner carry no range.
    const auto fixed = macCatalog().verdict("/Users/me/Library/Caches/Homebrew", true);
    EXPECT_EQ(fixed.applicationLength, 0u);
    // Expanding with a path too short for the range leaves the owner out instead of reading past it.
    const auto expanded = macCatalog().expand(verdict, "/short");
    EXPECT_EQ(expanded.application, std::nullopt);
    EXPECT_EQ(expanded.category, C::caches);
    // A verdict from nowhere expands to the unknown classification.
    EXPECT_EQ(macCatalog().expand(SpaceVerdict{60000, C::caches, R::green, 0, 0}, path),
              SpaceClassification::unknown());
}

TEST(SpaceCatalogTest, ProjectRuleVerdictsBelongToTheirCatalogue) {
    const SpaceCatalog catalog("/Users/me", {"/a", "/b"});
    const auto first = catalog.verdict("/a/x", false);
    const auto second = catalog.verdict("/b/x", false);
    EXPECT_NE(first.rule, second.rule);
    EXPECT_EQ(catalog.expand(second, "/b/x").rationale, "Project source under /b. Never removed based on size.");
    // A catalogue without that root cannot expand the verdict to anything but unknown.
    EXPECT_EQ(macCatalog().expand(second, "/b/x"), SpaceClassification::unknown());
}

// Paths glued together from the words the rules look for, with stray slashes: every verdict must
// point inside its own path and expand to the same classification classify gives.
TEST(SpaceCatalogTest, ArbitraryPathsGetConsistentVerdicts) {
    const std::array<std::string_view, 24> words{
        "/",           "//",   "Users",        "me",   "Library", "Caches",  "Developer", "Xcode",
        "DerivedData", "opt",  "homebrew",     "var",  "MySQL",   "private", "tmp",       "System",
        "Volumes",     "Data", "Applications", ".app", "com.a.b", ".cache",  "lib",       "node_modules"};
    const SpaceCatalog catalogs[] = {SpaceCatalog("/Users/me", {"/Users/me/Developer"}),
                                     SpaceCatalog("/Users/me", {}, Platform::linux)};
    std::uint32_t state = 12345;
    auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return state >> 8;
    };
    for (int round = 0; round < 20000; ++round) {
        std::string path;
        const auto length = next() % 9;
        for (std::uint32_t i = 0; i < length; ++i) path += words[next() % words.size()];
        for (const auto& catalog : catalogs) {
            const bool isDirectory = (next() & 1) != 0;
            const auto verdict = catalog.verdict(path, isDirectory);
            ASSERT_LE(std::size_t{verdict.applicationOffset} + verdict.applicationLength, path.size()) << path;
            const auto classification = catalog.classify(path, isDirectory);
            ASSERT_EQ(catalog.expand(verdict, path), classification) << path;
            ASSERT_EQ(verdict.category, classification.category) << path;
            ASSERT_FALSE(classification.rationale.empty()) << path;
        }
    }
}

// ---------------------------------------------------------------- canonical equivalence

// "José" composed (é = U+00E9) and decomposed (e + U+0301): one name to a person, two byte strings.
TEST(SpaceCatalogTest, EveryRuleFamilyMatchesWhicheverUnicodeFormTheHomeAndPathUse) {
    const std::string composed = "Jos\xC3\xA9";
    const std::string decomposed = "Jose\xCC\x81";
    // One path per rule family, below the home folder (or absolute, starting with "/").
    const std::vector<std::string> families = {
        "Library/Caches/com.example.Caf\xC3\xA9",  // the home's Library, owner from the path
        "Library/Developer/Xcode/DerivedData",     // the home's Library/Developer
        ".Trash",                                  // the home folder
        "Documents",                               // personal folders
        "dev/app",                                 // a project root
        "dev/app/node_modules",                    // a folder name inside a project
        "/Applications/Caf\xC3\xA9.app",           // outside the home folder
    };
    const SpaceCatalog reference("/Users/" + composed, {"/Users/" + composed + "/dev"});
    for (const bool homeComposed : {true, false}) {
        const std::string homeName = homeComposed ? composed : decomposed;
        const std::string pathName = homeComposed ? decomposed : composed;
        const SpaceCatalog catalog("/Users/" + homeName, {"/Users/" + homeName + "/dev"});
        for (const auto& family : families) {
            const bool absolute = family.front() == '/';
            const std::string path = absolute ? family : "/Users/" + pathName + "/" + family;
            const auto expected = reference.classify(absolute ? family : "/Users/" + composed + "/" + family, true);
            if (!absolute) {
                EXPECT_NE(expected.risk, R::gray) << family;  // a real rule decides it
            }
            EXPECT_EQ(catalog.classify(path, true), expected) << path;
            EXPECT_EQ(catalog.expand(catalog.verdict(path, true), path), expected) << path;
        }
    }
    // The owner read from a decomposed path is the composed name.
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Caches/com.example.Cafe\xCC\x81", true).application,
              "Caf\xC3\xA9");
    const SpaceCatalog linux("/home/" + composed, {}, Platform::linux);
    EXPECT_EQ(linux.classify("/home/" + decomposed + "/.cache/pip", true).category, C::packageManagers);
}
