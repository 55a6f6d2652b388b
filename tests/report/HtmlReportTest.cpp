#include "report/HtmlReport.h"
#include "report/HtmlText.h"
#include "report/TreemapHtml.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string hostile = "<b>x</b>\"'&</script><script>alert(1)</script>\xff\xfe\x1b[31m";

std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(HtmlText, HostileTextBecomesTextAndInvalidUtf8IsReplaced) {
    EXPECT_EQ(HtmlText::escape("a<b>&\"'"), "a&lt;b&gt;&amp;&quot;&#39;");
    const std::string escaped = HtmlText::escape(hostile);
    EXPECT_THAT(escaped, AllOf(Not(HasSubstr("<")), Not(HasSubstr(">")), Not(HasSubstr("\"")), Not(HasSubstr("\x1b")),
                               Not(HasSubstr("\xff"))));
    EXPECT_THAT(escaped, HasSubstr("&lt;/script&gt;"));
    EXPECT_EQ(HtmlText::escape("Café ☕"), "Café ☕");

    const std::string json = HtmlText::scriptJson(Json{{"name", hostile + "\xE2\x80\xA8"}});
    EXPECT_THAT(json, AllOf(Not(HasSubstr("<")), Not(HasSubstr(">")), Not(HasSubstr("\xE2\x80\xA8")),
                            HasSubstr("\\u003c/script\\u003e"), HasSubstr("\\u2028")));
    EXPECT_EQ(Json::parse(json)["name"].get<std::string>().substr(0, 8), "<b>x</b>");
}

TEST(HtmlReport, FillReplacesKnownPlaceholdersOnceAndNeverInsideValues) {
    EXPECT_EQ(HtmlReport::fill("a{{x}}b{{y}}c{{unknown}}", {{"x", "{{y}}"}, {"y", "2"}}), "a{{y}}b2c{{unknown}}");
}

SpaceNode tile(const std::string& path, std::int64_t bytes, std::vector<SpaceNode> children = {}) {
    SpaceNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.isDirectory = !children.empty();
    node.allocatedBytes = bytes;
    node.children = std::move(children);
    return node;
}

HtmlReportInput hostileInput() {
    HtmlReportInput input;
    input.source = "Recorded machine: " + hostile;
    StorageVolume volume;
    volume.id = "v1";
    volume.name = hostile;
    volume.mountPoint = "/Volumes/" + hostile;
    volume.totalBytes = 1000;
    volume.availableBytes = 100;
    input.snapshot.volumes.push_back(volume);
    input.forecasts["v1"] = 12.4;
    Insight insight;
    insight.title = "Clear " + hostile;
    insight.bytes = 123456789;
    input.insights.push_back(insight);
    SpaceScanReport scan;
    SpaceNode file = tile("/r/" + hostile + ".bin", 5000000);
    scan.largestFiles = {file, tile("/r/small.bin", 1000)};
    DuplicateGroup group;
    group.logicalBytes = 2000000;
    group.paths = {"/r/a", "/r/" + hostile};
    scan.duplicates = {group};
    input.space = ReportSpace{
        tile("/r", 9000,
             {tile("/r/dev", 6000, {tile("/r/dev/x", 4000), tile("/r/dev/y", 2000)}), tile("/r/" + hostile, 3000)}),
        scan, std::nullopt};
    return input;
}

TEST(HtmlReport, HostileNamesNeverBreakThePageAndTheOnlyScriptsAreOurs) {
    const std::string page = HtmlReport::render(hostileInput());
    EXPECT_EQ(occurrences(page, "<script"), 2u);
    EXPECT_EQ(occurrences(page, "</script>"), 2u);
    EXPECT_THAT(page,
                AllOf(Not(HasSubstr("<b>x")), Not(HasSubstr("\xff")), Not(HasSubstr("\x1b")),
                      HasSubstr("&lt;b&gt;x&lt;/b&gt;"), Not(HasSubstr("{{")), HasSubstr(HtmlReport::footerText)));
    // Nothing on the page points anywhere: no URL, and the policy forbids every request.
    EXPECT_FALSE(std::regex_search(page, std::regex("(src|href)=\"(https?:|//)", std::regex::icase)));
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
    // The embedded records read back as the document they came from.
    const auto start = page.find("id=\"velmora-data\">") + 18;
    const Json data = Json::parse(page.substr(start, page.find("</script>", start) - start));
    EXPECT_EQ(data["snapshot"]["volumes"][0]["id"], "v1");
    EXPECT_EQ(data["space"]["scan"]["largestFiles"].size(), 2u);
}

TEST(HtmlReport, TablesHoldEveryRowWithSortableValuesAndVolumesShowUsageAndForecast) {
    const std::string page = HtmlReport::render(hostileInput());
    const auto table = [&](const std::string& id) {
        const auto start = page.find("id=\"" + id + "\"");
        return page.substr(start, page.find("</table>", start) - start);
    };
    EXPECT_EQ(occurrences(table("largest-files"), "<tr>"), 3u);  // header and two files
    EXPECT_THAT(table("largest-files"), HasSubstr("data-value=\"5000000\">5 MB"));
    EXPECT_EQ(occurrences(table("duplicates"), "<tr>"), 2u);
    EXPECT_THAT(table("duplicates"), HasSubstr("data-value=\"2000000\">2 MB"));
    EXPECT_THAT(page, AllOf(HasSubstr("width:90.0%"), HasSubstr("about 12 days"), HasSubstr("123.5 MB")));
}

TEST(TreemapHtml, OneTilePerVisibleNodeWithAreaProportionalToBytesAndZoomLinks) {
    const auto input = hostileInput();
    const std::string html = TreemapHtml::render(input.space->tree);
    // Two panels (root and dev), root last so it shows while nothing is targeted.
    EXPECT_EQ(occurrences(html, "\" id=\"tm-"), 2u);
    EXPECT_LT(html.find("id=\"tm-1\""), html.find("id=\"tm-0\""));
    EXPECT_THAT(html, HasSubstr("<a href=\"#tm-1\"><rect"));
    EXPECT_THAT(html, HasSubstr("<a href=\"#tm-0\">r</a> › <strong>dev</strong>"));
    const std::regex rect(
        "<rect class=\"tile[^\"]*\" x=\"[^\"]+\" y=\"[^\"]+\" width=\"([^\"]+)\" height=\"([^\"]+)\" "
        "fill=\"#[0-9a-f]{6}\" data-bytes=\"([0-9]+)\"");
    std::size_t tiles = 0;
    for (auto it = std::sregex_iterator(html.begin(), html.end(), rect); it != std::sregex_iterator(); ++it) {
        ++tiles;
        const double area = std::stod((*it)[1]) * std::stod((*it)[2]);
        const double bytes = std::stod((*it)[3]);
        const double parentBytes = bytes == 4000 || bytes == 2000 ? 6000 : 9000;
        EXPECT_NEAR(area / (TreemapHtml::width * TreemapHtml::height), bytes / parentBytes, 0.002);
    }
    EXPECT_EQ(tiles, 4u);
    EXPECT_THAT(TreemapHtml::tileDetails(input.space->tree.children[0]),
                AllOf(HasSubstr("/r/dev"), HasSubstr("Allocated: 6 KB"), HasSubstr("Category: Other"),
                      HasSubstr("Risk: Unknown")));
}

}  // namespace
}  // namespace corvel
