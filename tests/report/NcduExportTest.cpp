#include "report/NcduExport.h"

#include "space/SpaceScanner.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace corvel {
namespace {

using ::testing::Contains;
using testing::TemporaryFolder;

struct Totals {
    std::int64_t apparent = 0;
    std::int64_t allocated = 0;
    std::int64_t entries = 0;
};

// Sums the export the way a browser of the format does: folders are arrays led by their own entry.
void sum(const Json& item, Totals& totals, std::vector<std::string>* names = nullptr) {
    const Json& info = item.is_array() ? item[0] : item;
    totals.apparent += info.value("asize", std::int64_t{0});
    totals.allocated += info.value("dsize", std::int64_t{0});
    ++totals.entries;
    if (names) names->push_back(info["name"]);
    if (item.is_array()) {
        for (std::size_t i = 1; i < item.size(); ++i) sum(item[i], totals);
    }
}

ScanTree scanOf(const std::string& root) {
    ScanProgress progress;
    SpaceScanOptions options;
    options.keptFilesPerFolder = 2;
    options.findDuplicates = false;
    return SpaceScanner::scan(root, options, progress, [] { return false; });
}

TEST(NcduExport, TotalsMatchTheScanAndFoldedFilesKeepTheirBytes) {
    TemporaryFolder folder;
    folder.write("big.bin", std::string(200000, 'x'));
    for (int i = 0; i < 6; ++i) folder.write("small" + std::to_string(i) + ".txt", std::string(100 + i, 'y'));
    folder.write("dev/app/main.c", std::string(9000, 'z'));
    folder.write("weird\xff<name>.txt", "odd");
    const ScanTree tree = scanOf(folder.path());

    const Json document = Json::parse(NcduExport::write(tree, "1.2.3", TimePoint{}));
    ASSERT_TRUE(document.is_array());
    ASSERT_EQ(document.size(), 4u);
    EXPECT_EQ(document[0], 1);
    EXPECT_EQ(document[1], 2);
    EXPECT_EQ(document[2]["progname"], "velmora");
    EXPECT_EQ(document[3][0]["name"], folder.path());

    Totals totals;
    std::vector<std::string> rootNames;
    for (std::size_t i = 1; i < document[3].size(); ++i) {
        const Json& item = document[3][i];
        rootNames.push_back((item.is_array() ? item[0] : item)["name"]);
    }
    sum(document[3], totals);
    EXPECT_EQ(totals.allocated, tree.root->allocatedBytes);
    EXPECT_EQ(totals.apparent, tree.root->logicalBytes);
    // Two kept files by name, the other six (and the odd name) folded into one entry, and the folder.
    EXPECT_THAT(rootNames, Contains("big.bin"));
    EXPECT_THAT(rootNames, Contains("(6 smaller items)"));
    EXPECT_THAT(rootNames, Contains("dev"));
    EXPECT_EQ(rootNames.size(), 4u);
}

// The browser of the format is the judge when it is installed: it must load the export and agree.
TEST(NcduExport, TheDiskUsageBrowserLoadsTheExportAndAgreesOnTheTotal) {
    if (std::system("command -v ncdu >/dev/null 2>&1") != 0) GTEST_SKIP() << "ncdu is not installed";
    TemporaryFolder folder;
    folder.write("a/one.bin", std::string(70000, 'x'));
    for (int i = 0; i < 20; ++i) folder.write("b/f" + std::to_string(i), std::string(5000, 'q'));
    const ScanTree tree = scanOf(folder.path());
    const std::string exported = folder.path("export.json");
    std::ofstream(exported) << NcduExport::write(tree, "1", TimePoint{});
    // ncdu re-exports what it loaded; its total disk usage must be ours.
    const std::string again = folder.path("again.json");
    ASSERT_EQ(std::system(("ncdu -f '" + exported + "' -o '" + again + "' </dev/null >/dev/null 2>&1").c_str()), 0);
    std::ifstream in(again);
    const Json reloaded = Json::parse(in);
    Totals totals;
    sum(reloaded[3], totals);
    EXPECT_EQ(totals.allocated, tree.root->allocatedBytes);
}

}  // namespace
}  // namespace corvel
