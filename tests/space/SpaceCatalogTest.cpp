#include "space/SpaceCatalog.h"

#include "common/Text.h"

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

struct Expected {
    const char* path;
    bool isDirectory;
    SpaceCategory category;
    CleanupRisk risk;
    std::optional<std::string> application;
};

// Checks category, risk and owner, and that the compact verdict expands to the same value, so
// every table below also exercises verdict() + expand().
void expectAll(const SpaceCatalog& catalog, std::initializer_list<Expected> cases) {
    for (const auto& c : cases) {
        const auto classification = catalog.classify(c.path, c.isDirectory);
        EXPECT_EQ(classification.category, c.category) << c.path << ": got " << rawValue(classification.category);
        EXPECT_EQ(classification.risk, c.risk) << c.path << ": got " << rawValue(classification.risk);
        EXPECT_EQ(classification.application, c.application) << c.path;
        const auto verdict = catalog.verdict(c.path, c.isDirectory);
        EXPECT_EQ(verdict.category, classification.category) << c.path;
        EXPECT_EQ(verdict.risk, classification.risk) << c.path;
        EXPECT_EQ(catalog.expand(verdict, c.path), classification) << c.path;
    }
}

const SpaceCatalog& macCatalog() {
    static const SpaceCatalog catalog("/Users/me");
    return catalog;
}

const SpaceCatalog& linuxCatalog() {
    static const SpaceCatalog catalog("/home/me", {}, Platform::linux);
    return catalog;
}

const std::string projectRationale = "Project source under /Users/me/dev. Never removed based on size.";

}  // namespace

// ---------------------------------------------------------------- enumerations and the record

TEST(CleanupRiskTest, SortsBySeverityNotByDeclarationOrder) {
    std::vector risks{R::red, R::gray, R::green, R::yellow};
    std::sort(risks.begin(), risks.end());
    EXPECT_EQ(risks, (std::vector{R::green, R::yellow, R::gray, R::red}));
    EXPECT_LT(R::gray, R::red);
    EXPECT_GT(R::gray, R::yellow);
    EXPECT_LE(R::red, R::red);
    EXPECT_GE(R::gray, R::yellow);
    EXPECT_FALSE(R::red < R::gray);
    // The declaration order is still the order of allCases.
    EXPECT_EQ(allCases<CleanupRisk>(), (std::array{R::green, R::yellow, R::red, R::gray}));
}

TEST(CleanupRiskTest, OnlyGreenAndYellowAreEligibleAndEveryCaseExplainsItself) {
    EXPECT_TRUE(isCleanupEligible(R::green));
    EXPECT_TRUE(isCleanupEligible(R::yellow));
    EXPECT_FALSE(isCleanupEligible(R::red));
    EXPECT_FALSE(isCleanupEligible(R::gray));
    EXPECT_EQ(explanation(R::gray), "Origin or impact unknown. Never offered for cleanup.");
    EXPECT_EQ(explanation(R::red),
              "Databases, Docker volumes, credentials, personal data, files in use or without backup. Never offered "
              "for cleanup.");
    EXPECT_EQ(explanation(R::green), "Regenerable, low-risk data. Eligible for cleanup once usage is verified.");
    EXPECT_EQ(explanation(R::yellow),
              "Caches, builds or files that existing projects may still need. Review before cleanup.");
    EXPECT_EQ(label(R::green), "Low risk");
    EXPECT_EQ(label(R::yellow), "Review");
    EXPECT_EQ(label(R::red), "Protected");
    EXPECT_EQ(label(R::gray), "Unknown");
}

TEST(CleanupRiskTest, JsonIsTheRawValueAndUnknownTextIsAnError) {
    EXPECT_EQ(Json(R::yellow).dump(), "\"yellow\"");
    EXPECT_EQ(Json("gray").get<CleanupRisk>(), R::gray);
    EXPECT_THROW((void)Json("purple").get<CleanupRisk>(), DecodingError);
    EXPECT_THROW((void)Json("Green").get<CleanupRisk>(), DecodingError);
}

TEST(SpaceCategoryTest, DisplayNameIsThePersistedFormInTableOrder) {
    const auto cases = allCases<SpaceCategory>();
    ASSERT_EQ(cases.size(), 20u);
    EXPECT_EQ(cases.front(), C::projects);
    EXPECT_EQ(cases[1], C::userData);
    EXPECT_EQ(cases[11], C::builds);
    EXPECT_EQ(cases.back(), C::other);
    EXPECT_EQ(Json(C::userData).dump(), "\"Personal Data\"");
    EXPECT_EQ(Json("Build Output").get<SpaceCategory>(), C::builds);
    EXPECT_EQ(Json("Virtual Environments").get<SpaceCategory>(), C::virtualEnvs);
    EXPECT_THROW((void)Json("userData").get<SpaceCategory>(), DecodingError);
    std::unordered_set<std::string_view> names;
    for (const auto category : cases) EXPECT_TRUE(names.insert(rawValue(category)).second) << rawValue(category);
}

TEST(SpaceClassificationTest, JsonKeysInFieldOrderWithAbsentOptionalsLeftOut) {
    const SpaceClassification full{C::caches, R::green, "Homebrew", "Application cache.", "brew cleanup"};
    const Json encoded = full;
    EXPECT_EQ(encoded.dump(),
              R"({"category":"Caches","risk":"green","application":"Homebrew","rationale":"Application cache.",)"
              R"("hint":"brew cleanup"})");
    EXPECT_EQ(encoded.get<SpaceClassification>(), full);

    const Json bare = SpaceClassification::unknown();
    EXPECT_EQ(bare.dump(),
              R"({"category":"Other","risk":"gray","rationale":"No rule identifies who owns this data."})");
    EXPECT_EQ(bare.get<SpaceClassification>(), SpaceClassification::unknown());
}

TEST(SpaceClassificationTest, DecodingRejectsMissingOrWrongKeys) {
    EXPECT_THROW((void)Json::parse(R"({"category":"Caches","risk":"green"})").get<SpaceClassification>(),
                 DecodingError);
    EXPECT_THROW((void)Json::parse(R"({"category":"Cache","risk":"green","rationale":"x"})").get<SpaceClassification>(),
                 DecodingError);
    EXPECT_THROW((void)Json::parse(R"({"category":"Caches","risk":3,"rationale":"x"})").get<SpaceClassification>(),
                 DecodingError);
    const auto decoded =
        Json::parse(R"({"category":"Caches","risk":"green","rationale":"x","hint":null})").get<SpaceClassification>();
    EXPECT_EQ(decoded.hint, std::nullopt);
}

TEST(SpaceClassificationTest, EqualityAndHashCoverEveryField) {
    const SpaceClassification base{C::caches, R::green, "App", "Why.", std::nullopt};
    const std::hash<SpaceClassification> hash;
    auto changed = base;
    EXPECT_EQ(changed, base);
    EXPECT_EQ(hash(changed), hash(base));
    changed.hint = "";
    EXPECT_NE(changed, base);
    EXPECT_NE(hash(changed), hash(base));  // an empty hint is not an absent one
    changed = base;
    changed.application = std::nullopt;
    EXPECT_NE(changed, base);
    EXPECT_NE(hash(changed), hash(base));
    changed = base;
    changed.risk = R::yellow;
    EXPECT_NE(hash(changed), hash(base));
    std::unordered_set<SpaceClassification> set{base, base, SpaceClassification::unknown()};
    EXPECT_EQ(set.size(), 2u);
}

// ---------------------------------------------------------------- construction and tables

TEST(SpaceCatalogTest, HomeLosesOneTrailingSlashAndIsMatchedByComponent) {
    const SpaceCatalog withSlash("/Users/me/");
    EXPECT_EQ(withSlash.home(), "/Users/me");
    EXPECT_EQ(withSlash, macCatalog());
    expectAll(withSlash, {
                             {"/Users/me", true, C::userData, R::red, std::nullopt},
                             {"/Users/me/.ssh", true, C::credentials, R::red, std::nullopt},
                             {"/Users/meow", true, C::other, R::gray, std::nullopt},
                             {"/Users/meow/.ssh", true, C::other, R::gray, std::nullopt},
                         });
    EXPECT_EQ(withSlash.classify("/Users/meow", true), SpaceClassification::unknown());
}

TEST(SpaceCatalogTest, AppNameTakesTheLastPieceOfReverseDomainNames) {
    EXPECT_EQ(SpaceCatalog::appName("com.apple.Safari"), "Safari");
    EXPECT_EQ(SpaceCatalog::appName("org.mozilla.firefox"), "firefox");
    EXPECT_EQ(SpaceCatalog::appName("group.com.docker"), "docker");
    EXPECT_EQ(SpaceCatalog::appName("io..github..tool"), "tool");  // empty pieces do not count
    EXPECT_EQ(SpaceCatalog::appName("com.foo"), "com.foo");
    EXPECT_EQ(SpaceCatalog::appName("Homebrew"), "Homebrew");
    EXPECT_EQ(SpaceCatalog::appName("uk.co.bbc.iplayer"), "uk.co.bbc.iplayer");  // not a known top level
    EXPECT_EQ(SpaceCatalog::appName("Com.apple.Safari"), "Com.apple.Safari");    // case matters
    EXPECT_EQ(SpaceCatalog::appName(""), "");
}

TEST(SpaceCatalogTest, SharedTables) {
    const auto& databases = SpaceCatalog::databaseDirectories();
    EXPECT_NE(std::find(databases.begin(), databases.end(), "clickhouse"), databases.end());
    for (const auto name : databases) EXPECT_EQ(name, toLower(name));
    const auto& groups = SpaceCatalog::knownGroupContainers();
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups.at("UBF8T346G9.Office").application, "Microsoft Office");
    EXPECT_EQ(groups.at("UBF8T346G9.Office").risk, R::gray);
    EXPECT_EQ(groups.at("group.net.whatsapp.WhatsApp.shared").rationale,
              "Chat media and message database. Manage it in WhatsApp \u203A Settings \u203A Storage and Data.");
}

// ---------------------------------------------------------------- project roots and names

TEST(SpaceCatalogTest, ProjectRootsProtectSourceButKeepReviewableBuildFolders) {
    const SpaceCatalog catalog("/Users/me", {"/Users/me/dev"});
    expectAll(catalog, {
                           {"/Users/me/dev/app/node_modules", true, C::nodeModules, R::yellow, "npm / yarn / pnpm"},
                           {"/Users/me/dev/app/.venv", true, C::virtualEnvs, R::yellow, "Python"},
                           {"/Users/me/dev/app/.next", true, C::builds, R::yellow, "JavaScript tooling"},
                           {"/Users/me/dev/app/__pycache__", true, C::projects, R::red, std::nullopt},
                           {"/Users/me/dev/app/.git", true, C::projects, R::red, std::nullopt},
                           {"/Users/me/dev/app/node_modules", false, C::projects, R::red, std::nullopt},
                           {"/Users/me/dev", true, C::projects, R::red, std::nullopt},
                           // Inside a root, even a home rule's data is project source.
                           {"/Users/me/dev/.ssh", true, C::projects, R::red, std::nullopt},
                           {"/Users/me/devices", true, C::other, R::gray, std::nullopt},
                           {"/System/Volumes/Data/Users/me/dev/x.swift", false, C::projects, R::red, std::nullopt},
                       });
    const auto source = catalog.classify("/Users/me/dev/app/.git", true);
    EXPECT_EQ(source.rationale, projectRationale);
    EXPECT_EQ(source.hint, "Use the Migration Center to verify the SSD copy before freeing internal space.");
}

TEST(SpaceCatalogTest, TheFirstMatchingProjectRootNamesTheVerdict) {
    const SpaceCatalog catalog("/Users/me", {"/Users/me/dev/big", "/Users/me/dev", "/Volumes/SSD/work"});
    EXPECT_EQ(catalog.classify("/Users/me/dev/big/x", false).rationale,
              "Project source under /Users/me/dev/big. Never removed based on size.");
    EXPECT_EQ(catalog.classify("/Users/me/dev/small/x", false).rationale, projectRationale);
    EXPECT_EQ(catalog.classify("/Volumes/SSD/work/a/b", false).rationale,
              "Project source under /Volumes/SSD/work. Never removed based on size.");
    // The same roots in another order decide differently, and the catalogues differ.
    const SpaceCatalog reordered("/Users/me", {"/Users/me/dev", "/Users/me/dev/big", "/Volumes/SSD/work"});
    EXPECT_EQ(reordered.classify("/Users/me/dev/big/x", false).rationale, projectRationale);
    EXPECT_NE(reordered, catalog);
}

TEST(SpaceCatalogTest, NameRulesApplyToFoldersAnywhereButNeverToFiles) {
    expectAll(macCatalog(),
              {
                  {"/Volumes/X/app/node_modules", true, C::nodeModules, R::yellow, "npm / yarn / pnpm"},
                  {"/Users/me/Documents/app/node_modules", true, C::userData, R::red, std::nullopt},  // home rule first
                  {"/Users/me/src/app/venv", true, C::virtualEnvs, R::yellow, "Python"},
                  {"/Users/me/src/app/.build", true, C::builds, R::yellow, std::nullopt},
                  {"/Users/me/src/app/DerivedData", true, C::builds, R::yellow, std::nullopt},
                  {"/Users/me/src/web/.nuxt", true, C::builds, R::yellow, "JavaScript tooling"},
                  {"/Users/me/src/web/.turbo", true, C::builds, R::yellow, "JavaScript tooling"},
                  {"/Users/me/src/web/.parcel-cache", true, C::builds, R::yellow, "JavaScript tooling"},
                  {"/Users/me/src/py/.pytest_cache", true, C::caches, R::green, "Python"},
                  {"/Users/me/src/py/.mypy_cache", true, C::caches, R::green, "Python"},
                  {"/Users/me/src/py/__pycache__", true, C::caches, R::green, "Python"},
                  {"/Users/me/src/py/.git", true, C::projects, R::red, "git"},
                  {"/Users/me/src/py/.git", false, C::other, R::gray, std::nullopt},
                  {"/Users/me/src/py/Node_Modules", true, C::other, R::gray, std::nullopt},
                  {"/Users/me/src/app/node_modules/", true, C::nodeModules, R::yellow, "npm / yarn / pnpm"},
                  {"node_modules", true, C::nodeModules, R::yellow, "npm / yarn / pnpm"},  // relative: only names
              });
    const auto modules = macCatalog().classify("/x/node_modules", true);
    EXPECT_EQ(modules.rationale, "Installed dependencies; reinstalled from the lockfile.");
    EXPECT_EQ(modules.hint, "npm ci / pnpm install");
}

// ---------------------------------------------------------------- the home folder

TEST(SpaceCatalogTest, HomeRulesDecideOnTheFirstComponent) {
    expectAll(macCatalog(),
              {
                  {"/Users/me", true, C::userData, R::red, std::nullopt},
                  {"/Users/me/.Trash", true, C::trash, R::yellow, "Finder"},
                  {"/Users/me/.Trash/old.zip", false, C::trash, R::yellow, "Finder"},
                  {"/Users/me/.gnupg", true, C::credentials, R::red, std::nullopt},
                  {"/Users/me/.aws/credentials", false, C::credentials, R::red, std::nullopt},
                  {"/Users/me/.kube", true, C::credentials, R::red, std::nullopt},
                  {"/Users/me/.docker/config.json", false, C::credentials, R::red, std::nullopt},
                  {"/Users/me/Documents", true, C::userData, R::red, std::nullopt},
                  {"/Users/me/Desktop/a.png", false, C::userData, R::red, std::nullopt},
                  {"/Users/me/Pictures", true, C::userData, R::red, std::nullopt},
                  {"/Users/me/Movies", true, C::userData, R::red, std::nullopt},
                  {"/Users/me/Music", true, C::userData, R::red, std::nullopt},
                  {"/Users/me/Downloads/big.dmg", false, C::downloads, R::gray, std::nullopt},
                  {"/Users/me/.npm/_cacache", true, C::packageManagers, R::green, "npm"},
                  {"/Users/me/.gradle/caches", true, C::packageManagers, R::green, "Gradle"},
                  {"/Users/me/.gradle/caches/modules-2", true, C::packageManagers, R::green, "Gradle"},
                  {"/Users/me/.gradle", true, C::other, R::gray, std::nullopt},
                  {"/Users/me/.gradle/wrapper", true, C::other, R::gray, std::nullopt},
                  {"/Users/me/.m2/repository", true, C::packageManagers, R::yellow, "Maven"},
                  {"/Users/me/.cargo/registry", true, C::packageManagers, R::green, "Cargo"},
                  {"/Users/me/.cargo/bin", true, C::other, R::gray, std::nullopt},
                  {"/Users/me/.rustup/toolchains", true, C::packageManagers, R::yellow, ".rustup"},
                  {"/Users/me/.nvm", true, C::packageManagers, R::yellow, ".nvm"},
                  {"/Users/me/.pyenv/versions", true, C::packageManagers, R::yellow, ".pyenv"},
                  {"/Users/me/.sdkman", true, C::packageManagers, R::yellow, ".sdkman"},
                  {"/Users/me/projects", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/Developer", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/etl", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/code", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/workspace", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/src/", true, C::projects, R::red, std::nullopt},
                  {"/Users/me/src/app", true, C::other, R::gray, std::nullopt},
                  {"/Users/me/Projects", true, C::other, R::gray, std::nullopt},    // case matters
                  {"/Users/me/.cache/pip", true, C::other, R::gray, std::nullopt},  // a Linux home, not a macOS one
              });
    const auto trash = macCatalog().classify("/Users/me/.Trash", true);
    EXPECT_EQ(trash.rationale, "Items you already moved to the Trash. Emptying it is irreversible.");
    EXPECT_EQ(trash.hint, "Review the Trash in Finder and empty it there if nothing is needed.");
    const auto npm = macCatalog().classify("/Users/me/.npm", true);
    EXPECT_EQ(npm.hint, "npm cache clean --force");
    EXPECT_EQ(macCatalog().classify("/Users/me/Downloads", true).hint, "Review in Finder sorted by size.");
}

TEST(SpaceCatalogTest, FirmlinkedDataVolumePathsClassifyLikeTheirRootPaths) {
    for (const char* path : {"/Users/me/.ssh", "/Users/me/Library/Caches/com.apple.Safari", "/Applications/Xcode.app",
                             "/opt/homebrew/var/postgresql@16", "/private/var/folders/x"}) {
        const std::string firmlinked = std::string("/System/Volumes/Data") + path;
        EXPECT_EQ(macCatalog().classify(firmlinked, true), macCatalog().classify(path, true)) << path;
    }
    expectAll(macCatalog(),
              {
                  {"/System/Volumes/Data/Users/me/.ssh", true, C::credentials, R::red, std::nullopt},
                  // The mount point itself is left alone and, having no components after it, matches nothing.
                  {"/System/Volumes/Data", true, C::other, R::gray, std::nullopt},
                  {"/System/Volumes/Preboot", true, C::system, R::red, "macOS"},
              });
}

// ---------------------------------------------------------------- the home Library

TEST(SpaceCatalogTest, LibraryRules) {
    expectAll(
        macCatalog(),
        {
            {"/Users/me/Library", true, C::appData, R::gray, std::nullopt},
            {"/Users/me/Library/Caches", true, C::caches, R::yellow, std::nullopt},
            {"/Users/me/Library/Caches/com.spotify.client", true, C::caches, R::green, "client"},
            {"/Users/me/Library/Caches/com.spotify.client/Data/x", false, C::caches, R::green, "client"},
            {"/Users/me/Library/Caches/Homebrew", true, C::caches, R::green, "Homebrew"},
            {"/Users/me/Library/Caches/com.apple.dt.Xcode", true, C::xcode, R::green, "Xcode"},
            {"/Users/me/Library/Logs", true, C::logs, R::green, std::nullopt},
            {"/Users/me/Library/Logs/com.apple.xcodebuild", true, C::logs, R::green, "xcodebuild"},
            {"/Users/me/Library/Containers/com.docker.docker", true, C::docker, R::red, "Docker Desktop"},
            {"/Users/me/Library/Containers/com.apple.mail", true, C::appData, R::gray, "mail"},
            {"/Users/me/Library/Containers", true, C::appData, R::gray, std::nullopt},
            {"/Users/me/Library/Group Containers/group.com.docker", true, C::appData, R::red, "Docker Desktop"},
            {"/Users/me/Library/Group Containers/group.net.whatsapp.WhatsApp.shared/Media", true, C::appData, R::red,
             "WhatsApp"},
            {"/Users/me/Library/Group Containers/UBF8T346G9.Office", true, C::appData, R::gray, "Microsoft Office"},
            {"/Users/me/Library/Group Containers/group.com.apple.notes", true, C::appData, R::gray, "notes"},
            {"/Users/me/Library/Group Containers", true, C::appData, R::gray, std::nullopt},
            {"/Users/me/Library/Application Support/Code", true, C::appData, R::gray, "Code"},
            {"/Users/me/Library/Application Support", true, C::appData, R::gray, std::nullopt},
            {"/Users/me/Library/Keychains/login.keychain-db", false, C::credentials, R::red, "Keychain"},
            {"/Users/me/Library/Mail", true, C::userData, R::red, "Mail"},
            {"/Users/me/Library/Messages", true, C::userData, R::red, "Messages"},
            {"/Users/me/Library/Photos", true, C::userData, R::red, "Photos"},
            {"/Users/me/Library/Mobile Documents/com~apple~CloudDocs", true, C::userData, R::red, "Mobile Documents"},
            {"/Users/me/Library/CloudStorage", true, C::userData, R::red, "CloudStorage"},
            {"/Users/me/Library/Preferences", true, C::appData, R::gray, "Preferences"},
            // Name rules do not reach into the Library: its own rules always decide.
            {"/Users/me/Library/Application Support/x/node_modules", true, C::appData, R::gray, "x"},
        });
    const auto caches = macCatalog().classify("/Users/me/Library/Caches", true);
    EXPECT_EQ(caches.rationale, "Application cache. Apps rebuild caches when needed; quit the app before cleaning.");
    EXPECT_EQ(caches.hint, std::nullopt);
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Caches/Homebrew", true).hint, "brew cleanup");
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Caches/Homebrew/downloads", true).hint, "brew cleanup");
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Caches/homebrew", true).hint, std::nullopt);
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Containers/com.docker.docker", true).hint,
              "Use the Docker Storage Center; reclaim space only with Docker's own tools.");
}

TEST(SpaceCatalogTest, DeveloperRulesArePrefixTestsInOrder) {
    expectAll(
        macCatalog(),
        {
            {"/Users/me/Library/Developer/Xcode/DerivedData", true, C::builds, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer/Xcode/DerivedData/App-abc/Build", true, C::builds, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer/Xcode/DerivedDataOld", true, C::builds, R::yellow, "Xcode"},  // plain prefix
            {"/Users/me/Library/Developer/Xcode/Archives/2026-11-02", true, C::xcode, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer/Xcode/iOS DeviceSupport/18.1", true, C::xcode, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer/Xcode/watchOS DeviceSupport", true, C::xcode, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer//Xcode//DerivedData", true, C::builds, R::yellow, "Xcode"},
            {"/Users/me/Library/Developer/CoreSimulator/Devices", true, C::simulators, R::yellow, "Simulator"},
            {"/Users/me/Library/Developer/Xcode/UserData", true, C::xcode, R::gray, "Xcode"},
            {"/Users/me/Library/Developer", true, C::xcode, R::gray, "Xcode"},
        });
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Developer/CoreSimulator", true).hint,
              "xcrun simctl delete unavailable");
    EXPECT_EQ(macCatalog().classify("/Users/me/Library/Developer/Xcode/DerivedData", true).rationale,
              "Build intermediates; Xcode rebuilds them (first build afterwards is slower).");
}

// ---------------------------------------------------------------- outside the home folder

TEST(SpaceCatalogTest, DatabaseDataOnlyUnderHomebrewVarFolders) {
    expectAll(macCatalog(), {
                                {"/opt/homebrew/var/postgresql@16", true, C::databases, R::red, "Homebrew service"},
                                {"/opt/homebrew/var/lib/MySQL", true, C::databases, R::red, "Homebrew service"},
                                {"/usr/local/var/mongodb/journal", true, C::databases, R::red, "Homebrew service"},
                                {"/usr/local/var/log", true, C::packageManagers, R::gray, "Homebrew"},
                                {"/opt/homebrew/var", true, C::packageManagers, R::gray, "Homebrew"},
                                {"/Users/me/Postgres", true, C::other, R::gray, std::nullopt},
                                {"/Volumes/X/mysql", true, C::other, R::gray, std::nullopt},
                            });
    EXPECT_EQ(macCatalog().classify("/opt/homebrew/var/redis", true).hint,
              "Inspect with the database's own tools (e.g. psql \\l+). Never delete the data directory.");
}

TEST(SpaceCatalogTest, ApplicationsHomebrewAndPrefixes) {
    expectAll(macCatalog(), {
                                {"/Applications/Foo.app", true, C::applications, R::gray, "Foo"},
                                {"/Applications/Foo.app/Contents/MacOS/Foo", false, C::applications, R::gray, "Foo"},
                                {"/Applications/Utilities.app.app", true, C::applications, R::gray, "Utilities"},
                                {"/Applications/.app", true, C::applications, R::gray, ""},
                                {"/Applications", true, C::applications, R::gray, std::nullopt},
                                {"/opt/homebrew/Cellar/git", true, C::packageManagers, R::yellow, "Homebrew"},
                                {"/opt/homebrew/Caskroom", true, C::packageManagers, R::yellow, "Homebrew"},
                                {"/opt/homebrew/bin", true, C::packageManagers, R::gray, "Homebrew"},
                                {"/usr/local/bin/git", false, C::packageManagers, R::gray, "Homebrew"},
                                {"/opt", true, C::packageManagers, R::gray, "Homebrew"},
                            });
    EXPECT_EQ(macCatalog().classify("/opt/homebrew/Cellar", true).hint, "brew cleanup, brew autoremove");
}

TEST(SpaceCatalogTest, PrivateFoldersInRuleOrder) {
    expectAll(macCatalog(),
              {
                  {"/private/tmp/build", true, C::temporary, R::gray, std::nullopt},
                  {"/private/tmp/com.google.Chrome.code_sign_clone", true, C::temporary, R::gray, std::nullopt},
                  {"/private/var/folders/zz/abc/X/com.google.Chrome.code_sign_clone/code_sign_clone.1", true,
                   C::temporary, R::yellow, "Google Chrome"},
                  {"/private/var/folders/zz/abc", true, C::system, R::gray, "macOS"},
                  {"/private/var/vm/sleepimage", false, C::system, R::red, "macOS"},
                  {"/private/var/db", true, C::system, R::red, "macOS"},
                  {"/private", true, C::system, R::red, "macOS"},
                  {"/System/Library/CoreServices", true, C::system, R::red, "macOS"},
                  {"/Library/Developer/CoreSimulator/Volumes", true, C::simulators, R::yellow, "Xcode"},
                  {"/Library/Fonts", true, C::system, R::gray, std::nullopt},
                  {"/Volumes/External/x", true, C::other, R::gray, std::nullopt},
                  {"/tmp/x", true, C::other, R::gray, std::nullopt},  // a Linux place, unknown on macOS
                  {"/var/lib/docker", true, C::other, R::gray, std::nullopt},
                  {"", true, C::other, R::gray, std::nullopt},
                  {"/", true, C::other, R::gray, std::nullopt},
              });
    EXPECT_EQ(macCatalog().classify("/private/tmp", true).hint,
              "macOS clears /private/tmp at restart. Check for running processes first.");
    EXPECT_EQ(macCatalog().classify("/Library/Developer/CoreSimulator", true).hint,
              "Manage runtimes in Xcode \u203A Settings \u203A Components.");
    EXPECT_EQ(macCatalog().classify("/private/var/folders/a/com.google.Chrome.code_sign_clone", true).rationale,
              "APFS clones Chrome creates for code-signing checks. They share blocks with Chrome, so removing them "
              "frees little.");
}

// Rules compare the path's components joined with "/", so repeated and trailing slashes change
// nothing; and a tested prefix is plain text, so it may end inside a component.
TEST(SpaceCatalogTest, SlashesDoNotMatterAndPrefixesAreText) {
    expectAll(macCatalog(), {
                                {"/opt//homebrew/Cellar/git", true, C::packageManagers, R::yellow, "Homebrew"},
                                {"/opt/homebrew//Cellarx", true, C::packageManagers, R::yellow, "Homebrew"},
                                {"/opt/homebrew/Cellarx", true, C::packageManagers, R::yellow, "Homebrew"},
                                {"/opt/homebrew//var//postgresql@16/", true, C::databases, R::red, "Homebrew service"},
                                {"/opt/homebrew/variant/mysql", true, C::databases, R::red, "Homebrew service"},
                                {"/private//var/folders/x", true, C::system, R::gray, "macOS"},
                                {"/private/var/folder", true, C::system, R::red, "macOS"},
                                {"/private/tmp//", true, C::temporary, R::gray, std::nullopt},
                                {"/private//tmp", true, C::temporary, R::gray, std::nullopt},
                                {"/private/tmpfoo", true, C::temporary, R::gray, std::nullopt},
                                {"/private/tm", true, C::system, R::red, "macOS"},
                                {"/Library//Developer/CoreSimulator", true, C::simulators, R::yellow, "Xcode"},
                                {"/Users/me/Library//Caches//com.apple.Safari/", true, C::caches, R::green, "Safari"},
                                {"/Users/me//.ssh", true, C::credentials, R::red, std::nullopt},
                                {"/Users/me/Library/Developer/Xcode//Archives", true, C::xcode, R::yellow, "Xcode"},
                                {"/Users/me/Library/Developer/Xcode/Archive", true, C::xcode, R::gray, "Xcode"},
                            });
    expectAll(linuxCatalog(), {
                                  {"/var//lib//docker/", true, C::docker, R::red, "Docker Engine"},
                                  {"/home/me//.cache//pip", true, C::packageManagers, R::green, "pip"},
                              });
}

// ---------------------------------------------------------------- the Linux homes of the same data

TEST(SpaceCatalogTest, LinuxCatalogueKnowsTheLinuxHomes) {
    expectAll(linuxCatalog(),
              {
                  {"/home/me/.cache", true, C::caches, R::yellow, std::nullopt},
                  {"/home/me/.cache/pip", true, C::packageManagers, R::green, "pip"},
                  {"/home/me/.cache/uv", true, C::packageManagers, R::green, "uv"},
                  {"/home/me/.cache/yarn/v6", true, C::packageManagers, R::green, "Yarn"},
                  {"/home/me/.cache/go-build", true, C::caches, R::green, "Go"},
                  {"/home/me/.cache/ccache", true, C::caches, R::green, "ccache"},
                  {"/home/me/.cache/bazel", true, C::builds, R::yellow, "Bazel"},
                  {"/home/me/.cache/huggingface/hub", true, C::caches, R::yellow, "Hugging Face"},
                  {"/home/me/.cache/mozilla", true, C::caches, R::green, "mozilla"},
                  {"/home/me/.cache/org.gnome.Software", true, C::caches, R::green, "Software"},
                  {"/home/me/.local/share/Trash", true, C::trash, R::yellow, "File manager"},
                  {"/home/me/.local/share/Trash/files/old.iso", false, C::trash, R::yellow, "File manager"},
                  {"/home/me/.local/share/containers/storage", true, C::docker, R::red, "Podman"},
                  {"/home/me/.local/share/docker", true, C::docker, R::red, "Docker"},
                  {"/home/me/.local/share/fonts", true, C::other, R::gray, std::nullopt},
                  {"/home/me/go/pkg/mod", true, C::packageManagers, R::green, "Go"},
                  {"/home/me/go/src", true, C::other, R::gray, std::nullopt},
                  {"/home/me/Videos", true, C::userData, R::red, std::nullopt},
                  {"/var/lib/docker/overlay2", true, C::docker, R::red, "Docker Engine"},
                  {"/var/lib/containerd", true, C::docker, R::red, "containerd"},
                  {"/var/lib/containers/storage", true, C::docker, R::red, "Podman"},
                  {"/var/lib/postgresql/16/main", true, C::databases, R::red, "System service"},
                  {"/var/lib/MySQL", true, C::databases, R::red, "System service"},
                  {"/var/lib/apt", true, C::other, R::gray, std::nullopt},
                  {"/var/cache/apt/archives", true, C::packageManagers, R::green, "APT"},
                  {"/var/tmp/x", true, C::temporary, R::gray, std::nullopt},
                  {"/tmp", true, C::temporary, R::gray, std::nullopt},
                  {"/tmp/build/node_modules", true, C::temporary, R::gray, std::nullopt},
                  {"/usr/lib/x86_64-linux-gnu", true, C::system, R::red, "Linux"},
                  {"/usr/local/bin", true, C::applications, R::gray, std::nullopt},
                  {"/opt/google/chrome", true, C::applications, R::gray, "google"},
                  {"/opt", true, C::applications, R::gray, std::nullopt},
                  {"/opt/homebrew/Cellar/git", true, C::packageManagers, R::yellow, "Homebrew"},
                  {"/usr/local/var/postgres", true, C::databases, R::red, "Homebrew service"},
              });
    EXPECT_EQ(linuxCatalog().classify("/home/me/.cache/pip", true).hint, "pip cache purge");
    EXPECT_EQ(linuxCatalog().classify("/tmp", true).hint,
              "Most systems clear /tmp at restart. Check for running processes first.");
}

TEST(SpaceCatalogTest, LinuxRulesNeverOverrideTheSharedRules) {
    const SpaceCatalog withRoot("/home/me", {"/home/me/.cache/work"}, Platform::linux);
    expectAll(withRoot,
              {
                  {"/home/me/.cache/work/src", true, C::projects, R::red, std::nullopt},  // project roots come first
                  {"/home/me/.ssh", true, C::credentials, R::red, std::nullopt},
                  {"/home/me/.npm", true, C::packageManagers, R::green, "npm"},
                  {"/home/me/Documents", true, C::userData, R::red, std::nullopt},
                  {"/home/me/src/app/node_modules", true, C::nodeModules, R::yellow, "npm / yarn / pnpm"},
              });
    // The same macOS paths give the same verdicts whichever catalogue is asked.
    const SpaceCatalog linuxAtMacHome("/Users/me", {}, Platform::linux);
    for (const char* path : {"/Users/me/Library/Caches/com.apple.Safari", "/Applications/Xcode.app",
                             "/private/var/folders/x", "/opt/homebrew/var/mysql", "/Users/me/.Trash", "/System/Library",
                             "/Library/Developer/CoreSimulator/x", "/Volumes/X"})
        EXPECT_EQ(linuxAtMacHome.classify(path, true), macCatalog().classify(path, true)) << path;
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
