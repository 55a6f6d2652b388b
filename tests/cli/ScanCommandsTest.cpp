// `velmora scan`, driven through the real binary on a temporary folder.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "cli/VelmoraProcess.h"
#include "common/Json.h"

namespace corvel {
namespace {

using clitest::Outcome;

class ScanCommands : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(folder_.root() / "tree");
        std::filesystem::create_directories(folder_.root() / "data");
    }

    std::string path(const std::string& relative) const { return folder_.path(relative); }

    void write(const std::string& relative, const std::string& contents) const { folder_.write(relative, contents); }

    // Runs velmora with the data folder inside the test's folder, where the test can look at it.
    Outcome velmora(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"--data-dir", path("data")});
        return clitest::velmora(arguments);
    }

    clitest::TemporaryFolder folder_;
};

TEST_F(ScanCommands, JsonIsOneDocumentWithTheTreeAndTheReportAndTheSummaryIsSaved) {
    const std::string payload(1'500'000, 'd');
    write("tree/a/one.bin", payload);
    write("tree/b/two.bin", payload);
    write("tree/node_modules/x.js", "module");
    const Outcome outcome = velmora({"scan", "--json", "--depth", "1", "--exclude", "node_modules", path("tree")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.err.empty()) << outcome.err;  // no progress line without a terminal
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["tree"]["path"], path("tree"));
    EXPECT_EQ(document["tree"]["allocatedBytes"], document["report"]["allocatedBytes"]);
    EXPECT_EQ(document["report"]["fileCount"], 2);
    EXPECT_EQ(document["report"]["duplicates"].size(), 1u);
    EXPECT_EQ(document["report"]["wasCancelled"], false);
    for (const auto& child : document["tree"]["children"]) EXPECT_TRUE(child["children"].empty());

    std::ifstream summaryFile(path("data/space-summary.json"));
    ASSERT_TRUE(summaryFile.good());
    const Json summary = Json::parse(summaryFile);
    EXPECT_EQ(summary["root"], path("tree"));
    EXPECT_FALSE(summary["topConsumers"].empty());
}

TEST_F(ScanCommands, HumanOutputShowsEverySection) {
    write("tree/dev/main.cpp", std::string(20000, 'c'));
    const Outcome outcome = velmora({"scan", path("tree")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    for (const char* section : {"Biggest folders", "Largest files", "Duplicate candidates", "By category",
                                "Hard links save", "Clones share", "Unreadable folders: 0"})
        EXPECT_NE(outcome.out.find(section), std::string::npos) << section << "\n" << outcome.out;
    EXPECT_NE(outcome.out.find("dev/"), std::string::npos);
    EXPECT_EQ(outcome.out.find("PARTIAL"), std::string::npos);
}

TEST_F(ScanCommands, BadInputIsOneLineNamingIt) {
    const Outcome missing = velmora({"scan", path("nowhere")});
    EXPECT_EQ(missing.status, 2);
    EXPECT_NE(missing.err.find(path("nowhere")), std::string::npos) << missing.err;
    write("plain-file", "x");
    EXPECT_EQ(velmora({"scan", path("plain-file")}).status, 2);
    EXPECT_EQ(velmora({"scan", "--depth", "-1", path("tree")}).status, 2);
    EXPECT_EQ(velmora({"scan", "--top", "0", path("tree")}).status, 2);
}

}  // namespace
}  // namespace corvel
