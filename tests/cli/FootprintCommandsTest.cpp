// `velmora footprint` and `velmora dev`, driven through the real binary on temporary folders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::lineWith;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// The root and the area given through a link are measured where they lie; a hard link counts once.
TEST(FootprintCommands, JsonGivesTotalsPerAreaOfARootGivenThroughALink) {
    clitest::Sandbox box;
    box.write("real/images/layer.bin", std::string(20'000, 'v'));
    box.write("real/volumes/db.bin", std::string(5'000, 'v'));
    ASSERT_EQ(::link(box.path("real/volumes/db.bin").c_str(), box.path("real/db-link.bin").c_str()), 0);
    ASSERT_EQ(::symlink(box.path("real").c_str(), box.path("link").c_str()), 0);
    const Json document = box.json({"footprint", box.path("link"), "--area", box.path("link/images/")});
    EXPECT_EQ(document["total"]["fileCount"], 2);
    EXPECT_EQ(document["total"]["logicalBytes"], 25'000);
    EXPECT_EQ(document["areas"][box.path("real/images")]["logicalBytes"], 20'000) << document.dump();
    EXPECT_EQ(document["wasCancelled"], false);

    const auto text = box.run({"footprint", box.path("real")});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_THAT(text.out, AllOf(HasSubstr("UNIQUE PHYSICAL"), HasSubstr("Total"), HasSubstr("Unreadable folders: 0")));
    EXPECT_EQ(text.err, "") << "progress belongs to terminals only";
}

TEST(FootprintCommands, BadPathsAreRefusedWithOneLineNamingThem) {
    clitest::Sandbox box;
    box.write("file.txt", "v");
    box.folder.makeFolder("tree");
    box.folder.makeFolder("other");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"footprint", box.path("missing")}, "'" + box.path("missing") + "': no such folder"},
        {{"footprint", box.path("file.txt")}, "not a folder"},
        {{"footprint", box.path("tree"), "--area", box.path("other")}, "not inside"},
        {{"footprint", box.path("tree"), "--area", box.path("tree/nope")}, "--area"},
        {{"footprint"}, "path"},
    };
    for (const auto& [arguments, message] : cases) {
        const auto outcome = box.run(arguments);
        EXPECT_TRUE(clitest::failsWith(outcome, 2, message));
        EXPECT_EQ(outcome.out, "");
    }
}

TEST(FootprintCommands, DevMeasuresPresentLocationsAndLeavesMissingOnesUnmeasured) {
    clitest::Sandbox box;
    box.write("home/.cache/pip/http/wheel.bin", std::string(12'000, 'v'));
    box.write("home/.cache/pip/selfcheck.json", "{}");
    box.write("home/.npm", "a location that is a single file");
    std::vector<std::string> measured;
    for (const Json& entry : box.json({"--now", "2026-11-02T09:30:00Z", "dev"})) {
        if (!entry.contains("measurement")) continue;
        measured.push_back(entry["location"]["name"]);
        if (entry["location"]["name"] != "pip Cache") continue;
        EXPECT_EQ(entry["location"]["path"], box.path("home/.cache/pip"));
        EXPECT_EQ(entry["measurement"]["fileCount"], 2);
        EXPECT_EQ(entry["measurement"]["measuredAt"], "2026-11-02T09:30:00Z");
    }
    EXPECT_THAT(measured, ::testing::UnorderedElementsAre("pip Cache", "npm Cache"));

    const auto human = box.run({"dev"});
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_THAT(lineWith(human.out, "Android SDK"), HasSubstr("not present"));
    EXPECT_THAT(lineWith(human.out, "pip Cache"), Not(HasSubstr("not present")));
    EXPECT_THAT(human.out, AllOf(HasSubstr("`pip cache purge` clears it."), HasSubstr("in 2 of ")));
}

}  // namespace
}  // namespace corvel
