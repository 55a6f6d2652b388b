// `velmora scan`, driven through the real binary on a temporary folder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/VelmoraProcess.h"
#include "common/AtomicFile.h"
#include "common/Json.h"

namespace corvel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(ScanCommands, JsonIsOneDocumentWithTheTreeAndTheReportAndTheSummaryIsSaved) {
    clitest::Sandbox box;
    const std::string payload(1'500'000, 'd');
    box.write("tree/a/one.bin", payload);
    box.write("tree/b/two.bin", payload);
    box.write("tree/node_modules/x.js", "module");
    const auto outcome = box.run({"scan", "--json", "--depth", "1", "--exclude", "node_modules", box.path("tree")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");  // no progress line without a terminal
    const Json document = Json::parse(outcome.out);
    EXPECT_EQ(document["tree"]["path"], box.path("tree"));
    EXPECT_EQ(document["report"]["fileCount"], 2);
    EXPECT_EQ(document["report"]["duplicates"].size(), 1u);
    for (const auto& child : document["tree"]["children"]) EXPECT_TRUE(child["children"].empty());
    EXPECT_EQ(Json::parse(*AtomicFile::read(box.path("data/space-summary.json")))["root"], box.path("tree"));
}

TEST(ScanCommands, HumanOutputShowsEverySectionAndBadInputIsOneLine) {
    clitest::Sandbox box;
    box.write("tree/dev/main.cpp", std::string(20000, 'c'));
    const auto outcome = box.run({"scan", box.path("tree")});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    for (const char* section : {"Biggest folders", "Largest files", "Duplicate candidates", "By category",
                                "Hard links save", "Clones share", "Unreadable folders: 0", "dev/"})
        EXPECT_THAT(outcome.out, HasSubstr(section));
    EXPECT_THAT(outcome.out, Not(HasSubstr("PARTIAL")));

    box.write("plain-file", "x");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"scan", box.path("nowhere")}, box.path("nowhere")},
        {{"scan", box.path("plain-file")}, box.path("plain-file")},
        {{"scan", "--depth", "-1", box.path("tree")}, "--depth"},
        {{"scan", "--top", "0", box.path("tree")}, "--top"},
    };
    for (const auto& [arguments, needle] : cases) EXPECT_TRUE(clitest::failsWith(box.run(arguments), 2, needle));
}

}  // namespace
}  // namespace corvel
