// `velmora report --html` opened in a real browser: headless Chromium (or Chrome) loads the page
// once, prints the document it ended up with and takes a screenshot into the build folder. A small
// script appended to a copy of the page measures what the browser drew (tile sizes, table rows,
// resources fetched) and leaves the figures in the DOM for the test to read. Skips with a reason
// when no such browser is installed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/VelmoraProcess.h"
#include "command/CommandError.h"
#include "command/ProcessCommandRunner.h"
#include "common/AtomicFile.h"
#include "common/Json.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAreArray;

// A page that does not draw within this is broken, whatever the machine's load.
constexpr double browserTimeoutSeconds = 90;

// VELMORA_TEST_BROWSER, then the usual names in PATH, then the macOS application bundles.
std::optional<std::string> findBrowser() {
    if (const char* chosen = std::getenv("VELMORA_TEST_BROWSER"); chosen && *chosen) return std::string(chosen);
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');)
        for (const char* name : {"chromium", "chromium-browser", "google-chrome", "google-chrome-stable"})
            if (::access((folder + "/" + name).c_str(), X_OK) == 0) return folder + "/" + name;
    for (const char* bundle : {"/Applications/Google Chrome.app/Contents/MacOS/Google Chrome",
                               "/Applications/Chromium.app/Contents/MacOS/Chromium"})
        if (::access(bundle, X_OK) == 0) return std::string(bundle);
    return std::nullopt;
}

// Appended to the page under test: the figures of what was drawn, as JSON in a hidden element.
// Characters HTML would escape, and all non-ASCII, travel as \u escapes so the DOM text is the
// JSON itself.
constexpr const char* measuringScript = R"JS(<script>(function () {
  var tiles = [];
  Array.prototype.forEach.call(document.querySelectorAll("svg.treemap rect.tile"), function (tile) {
    var box = tile.getBoundingClientRect();
    if (box.width <= 0 || box.height <= 0) return;
    var title = tile.querySelector("title");
    tiles.push({path: tile.getAttribute("data-path"), width: box.width, height: box.height,
                title: title ? title.textContent : ""});
  });
  var tables = {};
  Array.prototype.forEach.call(document.querySelectorAll("table"), function (table, number) {
    var rows = table.tBodies.length ? table.tBodies[0].rows : [];
    tables[table.id || "table-" + number] = Array.prototype.map.call(rows, function (row) {
      return Array.prototype.map.call(row.cells, function (cell) { return cell.textContent; });
    });
  });
  var outward = [];
  Array.prototype.forEach.call(document.querySelectorAll("[href], [src]"), function (element) {
    var target = element.getAttribute("href") || element.getAttribute("src") || "";
    if (target.charAt(0) !== "#") outward.push(target);
  });
  var figures = {tiles: tiles, tables: tables, outward: outward,
                 resources: performance.getEntriesByType("resource").length,
                 scripts: document.scripts.length,
                 markup: document.querySelectorAll("body b, body img, body iframe, body object, body embed").length};
  var text = JSON.stringify(figures).replace(/[<>&\u007f-\uffff]/g, function (c) {
    return "\\u" + ("000" + c.charCodeAt(0).toString(16)).slice(-4);
  });
  var out = document.createElement("pre");
  out.id = "browser-figures";
  out.hidden = true;
  out.textContent = text;
  document.body.appendChild(out);
})();</script>)JS";

struct BrowserView {
    std::string dom;  // the document as the browser left it
    Json figures;     // what the measuring script found
    Json data;        // the page's own data block
};

// Loads `page` once in `browser`: the DOM after the scripts ran, and a screenshot `name`.png.
BrowserView openInBrowser(const std::string& browser, const std::string& page, const std::string& name) {
    const std::string screenshot = std::string(CORVEL_BROWSER_OUTPUT_DIR) + "/" + name + ".png";
    clitest::TemporaryFolder scratch;
    std::string html = AtomicFile::read(page).value_or("");
    const auto end = html.rfind("</body>");
    if (end == std::string::npos) throw std::runtime_error(page + " has no </body>");
    html.insert(end, measuringScript);
    const std::string measured = scratch.write("measured.html", html);
    std::filesystem::create_directories(std::filesystem::path(screenshot).parent_path());

    ProcessCommandRunner runner(browserTimeoutSeconds);
    BrowserView view;
    try {
        view.dom = runner.run(
            browser, {"--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
                      "--disable-background-networking", "--disable-component-update", "--disable-crash-reporter",
                      "--disable-extensions", "--user-data-dir=" + scratch.path("profile"), "--window-size=1280,2400",
                      "--screenshot=" + screenshot, "--dump-dom", "file://" + measured});
    } catch (const CommandError& failure) {
        throw std::runtime_error(browser + " could not load " + page + ": " + failure.description());
    }
    static const std::regex figures(R"(<pre id="browser-figures" hidden="">([^<]*)</pre>)");
    static const std::regex data(R"(<script type="application/json" id="velmora-data">([\s\S]*?)</script>)");
    std::smatch match;
    if (!std::regex_search(view.dom, match, figures))
        throw std::runtime_error(browser + " printed no measurements for " + page + " (the page's script failed?)");
    view.figures = Json::parse(match[1].str());
    if (!std::regex_search(view.dom, match, data)) throw std::runtime_error(page + " lost its data block");
    view.data = Json::parse(match[1].str());
    return view;
}

// Every visible tile is one child of the tree's root, and its share of the drawn area is its
// share of the bytes (within rounding of the coordinates).
void expectTreemapProportionalToBytes(const BrowserView& view) {
    const Json& tiles = view.figures["tiles"];
    if (!view.data.contains("space")) {
        EXPECT_THAT(tiles, IsEmpty());
        return;
    }
    std::map<std::string, double> bytesOf;
    double totalBytes = 0, totalArea = 0;
    for (const auto& child : view.data["space"]["tree"]["children"])
        totalBytes += bytesOf[child["path"].get<std::string>()] = child["allocatedBytes"].get<double>();
    std::vector<std::string> drawnPaths;
    for (const auto& tile : tiles) {
        drawnPaths.push_back(tile["path"]);
        totalArea += tile["width"].get<double>() * tile["height"].get<double>();
    }
    std::vector<std::string> expectedPaths;
    for (const auto& [path, bytes] : bytesOf) expectedPaths.push_back(path);
    ASSERT_THAT(drawnPaths, UnorderedElementsAreArray(expectedPaths));
    ASSERT_GT(totalArea, 0);
    for (const auto& tile : tiles) {
        const double share = tile["width"].get<double>() * tile["height"].get<double>() / totalArea;
        const double expected = bytesOf[tile["path"].get<std::string>()] / totalBytes;
        EXPECT_NEAR(share, expected, std::max(0.001, expected * 0.01)) << tile["path"];
    }
}

// Nothing in the page points outside it, nothing was fetched and only the page's scripts exist.
void expectSelfContained(const BrowserView& view, int ownScripts) {
    static const std::regex url("https?:", std::regex::icase);
    EXPECT_FALSE(std::regex_search(view.dom, url)) << "the page mentions a web address";
    EXPECT_THAT(view.figures["outward"], IsEmpty());
    EXPECT_EQ(view.figures["resources"], 0);
    EXPECT_EQ(view.figures["scripts"], ownScripts + 1);  // and the measuring one
}

// One cell (by position or by key) of every row.
template <class Key>
std::vector<std::string> column(const Json& rows, Key index) {
    std::vector<std::string> values;
    for (const auto& row : rows) values.push_back(row.at(index));
    return values;
}

class ReportInBrowser : public ::testing::Test {
protected:
    void SetUp() override {
        const auto found = findBrowser();
        if (!found) GTEST_SKIP() << "no Chromium or Chrome installed (scripts/install-deps installs chromium)";
        browser_ = *found;
    }

    // The report of the recorded machine `machineName` (and `extra` arguments) as `name` drew it.
    BrowserView open(const std::string& machineName, std::vector<std::string> extra, const std::string& name) {
        const std::string page = folder_.path(machineName + ".html");
        std::vector<std::string> arguments{
            "--data-dir", folder_.makeFolder("data"), "--replay", clitest::machine(machineName), "report", "--html",
            page};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        const auto outcome = clitest::velmora(arguments);
        if (outcome.status != 0) throw std::runtime_error("velmora report failed: " + outcome.err);
        return openInBrowser(browser_, page, name);
    }

    std::string browser_;
    clitest::TemporaryFolder folder_;
};

TEST_F(ReportInBrowser, RecordedMachineShowsItsDisksVolumesAndDockerAndLoadsNothing) {
    const BrowserView view = open("linux-docker-engine", {}, "linux-docker-engine");

    const Json& tables = view.figures.at("tables");
    const auto disks = column(view.data.at("snapshot").at("disks"), "id");
    ASSERT_THAT(disks, Not(IsEmpty()));
    EXPECT_THAT(column(tables.at("table-0"), 0), ElementsAreArray(disks));
    EXPECT_THAT(column(tables.at("table-1"), 0),
                ElementsAreArray(column(view.data.at("snapshot").at("volumes"), "name")));
    // The Docker disk usage lines: images, containers, volumes and build cache.
    EXPECT_THAT(tables.at("table-2"), SizeIs(view.data.at("docker").at("diskUsage").size()));
    EXPECT_THAT(view.dom, AllOf(::testing::HasSubstr("<h2>Docker</h2>"), ::testing::HasSubstr("<h2>Health</h2>")));
    expectTreemapProportionalToBytes(view);
    expectSelfContained(view, 2);
}

TEST_F(ReportInBrowser, ScannedTreeDrawsOneTilePerNodeListsFilesAndShowsHostileNamesAsText) {
    const std::string duplicate(1'200'000, 'd');
    const std::vector<std::pair<std::string, std::size_t>> files{
        {"tree/media/film.bin", 900'000},       {"tree/media/song.bin", 300'000},
        {"tree/code/main.cpp", 40'000},         {"tree/<b>bold</b>.txt", 120'000},
        {"tree/\"quoted\" 'name'.txt", 60'000}, {"tree/</script><script>alert(1)", 30'000},
        {"tree/bad\xff.bin", 200'000},
    };
    for (const auto& [relative, size] : files) folder_.write(relative, std::string(size, relative[6]));
    folder_.write("tree/copies/one.bin", duplicate);
    folder_.write("tree/copies/two.bin", duplicate);
    const std::string root = folder_.path("tree");

    const BrowserView view = open("linux-workstation", {root}, "scanned-tree");

    expectTreemapProportionalToBytes(view);
    EXPECT_THAT(view.figures["tiles"], SizeIs(7u));  // media, code, copies, the four loose files
    expectSelfContained(view, 2);
    EXPECT_EQ(view.figures["markup"], 0) << "a name became markup";

    // Every file is a row; the names are the text people see (invalid UTF-8 visibly replaced).
    const std::vector<std::string> shown{
        root + "/<b>bold</b>.txt",     root + "/\"quoted\" 'name'.txt", root + "/</script><script>alert(1)",
        root + "/bad\xEF\xBF\xBD.bin", root + "/copies/one.bin",        root + "/media/film.bin"};
    const auto listed = column(view.figures.at("tables").at("largest-files"), 0);
    EXPECT_THAT(listed, SizeIs(files.size() + 2));
    for (const auto& name : shown) EXPECT_THAT(listed, Contains(name));
    EXPECT_THAT(column(view.figures["tiles"], "title"),
                AllOf(Contains(::testing::StartsWith(root + "/\"quoted\" 'name'.txt\n")),
                      Contains(::testing::StartsWith(root + "/<b>bold<\n"))));

    const Json& duplicates = view.figures.at("tables").at("duplicates");
    ASSERT_THAT(duplicates, SizeIs(1));
    EXPECT_EQ(duplicates[0][1], "2");
    EXPECT_THAT(duplicates[0][3].get<std::string>(),
                AllOf(::testing::HasSubstr(root + "/copies/one.bin"), ::testing::HasSubstr(root + "/copies/two.bin")));
}

}  // namespace
}  // namespace corvel
