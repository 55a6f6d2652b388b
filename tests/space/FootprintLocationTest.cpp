#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "space/FootprintLocation.h"
#include "support/Golden.h"

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

// Every location of both lists, in display order, with its path, category and note, in one
// reviewed file.
TEST(FootprintLocationDefaults, BothListsMatchTheReviewedCopy) {
    Json rendered = Json::object();
    rendered["macos"] = FootprintLocation::defaults("/Users/me");
    rendered["linux"] = FootprintLocation::linuxDefaults("/home/dev");
    testing::expectGolden("space/footprint-locations.json", rendered);
}

TEST(FootprintLocationDefaults, AHomeWithATrailingSlashGivesTheSamePaths) {
    EXPECT_EQ(FootprintLocation::defaults("/Users/me/"), FootprintLocation::defaults("/Users/me"));
}

TEST(FootprintLocationDefaults, LinuxNamesAreUniqueAndAgreeWithTheMacTwins) {
    const auto locations = FootprintLocation::linuxDefaults("/home/dev");
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

}  // namespace
}  // namespace corvel
