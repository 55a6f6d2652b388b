// `velmora footprint` and `velmora dev`, driven through the real binary on temporary folders.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

namespace fs = std::filesystem;
using clitest::Outcome;
using clitest::velmora;

class FootprintCommands : public ::testing::Test {
protected:
    std::string path(const std::string& relative) const { return folder_.path(relative); }

    void write(const std::string& relative, std::size_t bytes) const {
        folder_.write(relative, std::string(bytes, 'v'));
    }

    clitest::TemporaryFolder folder_;
};

TEST_F(FootprintCommands, FootprintJsonGivesTotalsPerAreaWithHardLinksCountedOnce) {
    write("tree/images/layer.bin", 20'000);
    write("tree/volumes/db.bin", 5'000);
    ASSERT_EQ(::link(path("tree/volumes/db.bin").c_str(), path("tree/db-link.bin").c_str()), 0);
    const Outcome outcome = velmora({"--json", "footprint", path("tree"), "--area", path("tree/images/")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["total"]["fileCount"], 2);
    EXPECT_EQ(document["total"]["logicalBytes"], 25'000);
    EXPECT_EQ(document["total"]["unreadableFiles"], 0);
    const std::string images = fs::canonical(path("tree/images")).string();
    EXPECT_EQ(document["areas"][images]["fileCount"], 1);
    EXPECT_EQ(document["areas"][images]["logicalBytes"], 20'000);
    EXPECT_EQ(document["deniedDirectories"], 0);
    EXPECT_EQ(document["wasCancelled"], false);
}

TEST_F(FootprintCommands, FootprintMeasuresARootGivenThroughALinkWhereItLies) {
    write("real/data.bin", 7'000);
    write("real/sub/more.bin", 1'000);
    ASSERT_EQ(::symlink(path("real").c_str(), path("link").c_str()), 0);
    const Outcome outcome = velmora({"--json", "footprint", path("link"), "--area", path("link/sub")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["total"]["fileCount"], 2);
    const std::string realSub = fs::canonical(path("real/sub")).string();
    EXPECT_EQ(document["areas"][realSub]["logicalBytes"], 1'000) << document.dump();
}

TEST_F(FootprintCommands, FootprintPrintsTheTotalsTable) {
    write("tree/a.bin", 3'000);
    const Outcome outcome = velmora({"footprint", path("tree")}, {"NO_COLOR=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("UNIQUE PHYSICAL"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Total"), std::string::npos);
    EXPECT_THAT(outcome.out, ::testing::HasSubstr("Unreadable folders: 0"));
    EXPECT_TRUE(outcome.err.empty()) << "progress belongs to terminals only: " << outcome.err;
}

TEST_F(FootprintCommands, FootprintMeasuresAChainDeeperThanTheLongestPath) {
    // 150 folders of 40 characters: a full path of about 6,000 bytes, past what open() accepts.
    fs::create_directories(path("chain"));
    int fd = ::open(path("chain").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < 150 && fd >= 0; ++level) {
        const std::string name(40, 'd');
        ::mkdirat(fd, name.c_str(), 0755);
        const int next = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(fd);
        fd = next;
    }
    ASSERT_GE(fd, 0);
    const int file = ::openat(fd, "leaf.bin", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    ASSERT_EQ(::write(file, "leaf", 4), 4);
    ::close(file);
    ::close(fd);
    const Outcome outcome = velmora({"--json", "footprint", path("chain"), "--show-denied"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["total"]["fileCount"], 1);
    EXPECT_EQ(document["total"]["logicalBytes"], 4);
    EXPECT_EQ(document["deniedDirectories"], 0) << document["failures"].dump();
    // The temporary folder's clean-up goes by path: move the lower half up so that both halves fit.
    const int top = ::open(path("chain").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    int middle = ::dup(top);
    for (int level = 0; level < 74; ++level) {
        const int next = ::openat(middle, std::string(40, 'd').c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(middle);
        middle = next;
    }
    EXPECT_EQ(::renameat(middle, std::string(40, 'd').c_str(), top, "lower-half"), 0);
    ::close(middle);
    ::close(top);
}

TEST_F(FootprintCommands, FootprintRejectsBadPathsWithOneLineNamingThem) {
    write("file.txt", 10);
    fs::create_directories(path("tree"));
    fs::create_directories(path("other"));
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{"footprint", path("missing")}, "'" + path("missing") + "': no such folder"},
        {{"footprint", path("file.txt")}, "not a folder"},
        {{"footprint", path("tree"), "--area", path("other")}, "not inside"},
        {{"footprint", path("tree"), "--area", path("tree/nope")}, "--area"},
        {{"footprint"}, "path"},
    };
    for (const auto& item : cases) {
        const Outcome outcome = velmora(item.arguments);
        EXPECT_EQ(outcome.status, 2) << ::testing::PrintToString(item.arguments);
        EXPECT_EQ(outcome.err.rfind("velmora: ", 0), 0u) << outcome.err;
        EXPECT_NE(outcome.err.find(item.message), std::string::npos) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_TRUE(outcome.out.empty());
    }
}

TEST_F(FootprintCommands, DevMeasuresPresentLocationsAndLeavesMissingOnesUnmeasured) {
    write("home/.cache/pip/http/wheel.bin", 12'000);
    write("home/.cache/pip/selfcheck.json", 100);
    write("home/.npm", 500);  // a location that is a single file
    const std::string home = "HOME=" + path("home");
    const Outcome outcome = velmora({"--json", "--now", "2026-11-02T09:30:00Z", "dev"}, {home});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json document = Json::parse(outcome.out);
    ASSERT_TRUE(document.is_array());
    int measured = 0;
    for (const Json& entry : document) {
        const std::string name = entry["location"]["name"];
        if (name == "pip Cache") {
            EXPECT_EQ(entry["location"]["path"], path("home/.cache/pip"));
            EXPECT_EQ(entry["measurement"]["fileCount"], 2);
            EXPECT_GE(entry["measurement"]["allocatedBytes"].get<std::int64_t>(), 12'000);
            EXPECT_EQ(entry["measurement"]["measuredAt"], "2026-11-02T09:30:00Z");
        } else if (name == "npm Cache") {
            EXPECT_EQ(entry["measurement"]["fileCount"], 1);
        } else {
            EXPECT_FALSE(entry.contains("measurement")) << name;
        }
        measured += entry.contains("measurement") ? 1 : 0;
    }
    EXPECT_EQ(measured, 2);

    const Outcome human = velmora({"dev"}, {home, "NO_COLOR=1"});
    ASSERT_EQ(human.status, 0) << human.err;
    const auto androidLine = human.out.substr(human.out.find("Android SDK"));
    EXPECT_NE(androidLine.substr(0, androidLine.find('\n')).find("not present"), std::string::npos) << human.out;
    const auto pipLine = human.out.substr(human.out.find("pip Cache"));
    EXPECT_EQ(pipLine.substr(0, pipLine.find('\n')).find("not present"), std::string::npos) << human.out;
    EXPECT_NE(human.out.find("`pip cache purge` clears it."), std::string::npos);
    EXPECT_NE(human.out.find("in 2 of "), std::string::npos) << human.out;
}

}  // namespace
}  // namespace corvel
