#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "space/FootprintLocation.h"

namespace corvel {
namespace {

std::vector<std::string> namesOf(const std::vector<FootprintLocation>& locations) {
    std::vector<std::string> names;
    for (const auto& location : locations) names.push_back(location.name);
    return names;
}

const FootprintLocation* find(const std::vector<FootprintLocation>& locations, const std::string& name) {
    const auto found =
        std::find_if(locations.begin(), locations.end(), [&](const FootprintLocation& l) { return l.name == name; });
    return found == locations.end() ? nullptr : &*found;
}

TEST(FootprintLocationDefaults, ListsTheMacLocationsInDisplayOrder) {
    const auto locations = FootprintLocation::defaults("/Users/me");
    EXPECT_EQ(namesOf(locations), (std::vector<std::string>{
                                      "Xcode DerivedData", "Xcode Archives",   "iOS Device Support",  "Xcode Caches",
                                      "Simulator Devices", "Simulator Caches", "SwiftPM Cache",       "CocoaPods Cache",
                                      "Homebrew Cache",    "npm Cache",        "Yarn Cache",          "pnpm Store",
                                      "pip Cache",         "Gradle Caches",    "Maven Repository",    "Cargo Registry",
                                      "Go Module Cache",   "Rust Toolchains",  "Node Versions (nvm)", "Android SDK"}));
    EXPECT_EQ(locations.front(), (FootprintLocation{"Xcode DerivedData", FootprintCategory::xcode,
                                                    "/Users/me/Library/Developer/Xcode/DerivedData",
                                                    "Build intermediates. Safe to clear; Xcode rebuilds them."}));
    EXPECT_EQ(find(locations, "iOS Device Support")->path, "/Users/me/Library/Developer/Xcode/iOS DeviceSupport");
    EXPECT_EQ(
        *find(locations, "Simulator Devices"),
        (FootprintLocation{"Simulator Devices", FootprintCategory::simulators,
                           "/Users/me/Library/Developer/CoreSimulator/Devices",
                           "Simulator data. Remove unavailable devices with `xcrun simctl delete unavailable`."}));
    EXPECT_EQ(find(locations, "Android SDK")->category, FootprintCategory::toolchains);
    EXPECT_EQ(find(locations, "npm Cache")->path, "/Users/me/.npm");
    EXPECT_EQ(find(locations, "Go Module Cache")->category, FootprintCategory::packageManagers);
}

TEST(FootprintLocationDefaults, AHomeWithATrailingSlashGivesTheSamePaths) {
    EXPECT_EQ(FootprintLocation::defaults("/Users/me/"), FootprintLocation::defaults("/Users/me"));
}

TEST(FootprintLocationDefaults, LinuxUsesTheSameToolsLinuxHomes) {
    const auto locations = FootprintLocation::linuxDefaults("/home/dev");
    EXPECT_EQ(find(locations, "pip Cache")->path, "/home/dev/.cache/pip");
    EXPECT_EQ(find(locations, "Go Build Cache")->path, "/home/dev/.cache/go-build");
    EXPECT_EQ(find(locations, "Go Module Cache")->path, "/home/dev/go/pkg/mod");
    EXPECT_EQ(find(locations, "Cargo Registry")->path, "/home/dev/.cargo/registry");
    EXPECT_EQ(find(locations, "Rust Toolchains")->path, "/home/dev/.rustup/toolchains");
    EXPECT_EQ(find(locations, "Android SDK")->path, "/home/dev/Android/Sdk");
    EXPECT_EQ(find(locations, "Android SDK")->category, FootprintCategory::toolchains);
    EXPECT_EQ(find(locations, "Xcode DerivedData"), nullptr);
    // Tools known on both platforms keep their name, category and note.
    const auto mac = FootprintLocation::defaults("/home/dev");
    for (const auto& location : locations) {
        EXPECT_NE(location.category, FootprintCategory::custom) << location.name;
        if (const FootprintLocation* twin = find(mac, location.name)) {
            EXPECT_EQ(location.category, twin->category) << location.name;
            EXPECT_EQ(location.note, twin->note) << location.name;
        }
    }
    const auto names = namesOf(locations);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
}

TEST(FootprintLocationDefaults, ChoosesTheListByPlatform) {
    EXPECT_EQ(FootprintLocation::defaults("/h", Platform::linux), FootprintLocation::linuxDefaults("/h"));
    EXPECT_EQ(FootprintLocation::defaults("/h", Platform::macos), FootprintLocation::defaults("/h"));
}

TEST(FootprintLocationJson, UsesFieldNamesAndTheCategoryDisplayName) {
    const FootprintLocation location{"Rust Toolchains", FootprintCategory::toolchains, "/h/.rustup/toolchains",
                                     "Installed Rust toolchains."};
    const Json json = location;
    EXPECT_EQ(json.dump(), R"({"name":"Rust Toolchains","category":"Toolchains & SDKs",)"
                           R"("path":"/h/.rustup/toolchains","note":"Installed Rust toolchains."})");
    EXPECT_EQ(json.get<FootprintLocation>(), location);
    Json unknown = json;
    unknown["category"] = "Toolchains";
    EXPECT_THROW((void)unknown.get<FootprintLocation>(), DecodingError);
}

TEST(FootprintCategoryTable, KeepsTheDocumentedOrderAndRawValues) {
    std::vector<std::string> raw;
    for (FootprintCategory category : allCases<FootprintCategory>()) raw.emplace_back(rawValue(category));
    EXPECT_EQ(raw,
              (std::vector<std::string>{"Xcode", "Simulators", "Package Managers", "Toolchains & SDKs", "Custom"}));
}

}  // namespace
}  // namespace corvel
