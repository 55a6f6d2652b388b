// The text format for Prometheus: escaping of any label value, the family layout, and the atomic
// textfile a node exporter reads.
#include "monitoring/MetricsExposition.h"

#include "common/AtomicFile.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace corvel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::TemporaryFolder;

TEST(MetricsExposition, LabelValuesAreEscapedAndMadeUTF8) {
    struct Case {
        std::string input;
        std::string label;
        std::string help;
    };
    const std::vector<Case> cases{
        {"Macintosh HD", "Macintosh HD", "Macintosh HD"},
        {R"(say "hi")", R"(say \"hi\")", R"(say "hi")"},
        {R"(C:\disk\)", R"(C:\\disk\\)", R"(C:\\disk\\)"},
        {"two\nlines", R"(two\nlines)", R"(two\nlines)"},
        {"tab\tand \x1b[31mred", "tab\tand \x1b[31mred", "tab\tand \x1b[31mred"},  // allowed as they are
        {"Photos 🚀 Été", "Photos 🚀 Été", "Photos 🚀 Été"},
        {"bad \xff byte", "bad \xEF\xBF\xBD byte", "bad \xEF\xBF\xBD byte"},
        {"cut \xE2\x82", "cut \xEF\xBF\xBD\xEF\xBF\xBD", "cut \xEF\xBF\xBD\xEF\xBF\xBD"},
        {"surrogate \xED\xA0\x80", "surrogate \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD",
         "surrogate \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"overlong \xC0\xAF", "overlong \xEF\xBF\xBD\xEF\xBF\xBD", "overlong \xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MetricsExposition::escapeLabelValue(c.input), c.label) << c.input;
        EXPECT_EQ(MetricsExposition::escapeHelp(c.input), c.help) << c.input;
    }
}

TEST(MetricsExposition, ValuesReadBackExactly) {
    EXPECT_EQ(MetricsExposition::formatValue(500107862016.0), "500107862016");
    EXPECT_EQ(MetricsExposition::formatValue(0.85), "0.85");
    EXPECT_EQ(MetricsExposition::formatValue(-1), "-1");
    EXPECT_EQ(MetricsExposition::formatValue(std::nan("")), "NaN");
    EXPECT_EQ(MetricsExposition::formatValue(HUGE_VAL), "+Inf");
    EXPECT_EQ(MetricsExposition::formatValue(-HUGE_VAL), "-Inf");
}

TEST(MetricsExposition, FamiliesHaveOneHeaderAndDistinctSeries) {
    MetricFamily size{"velmora_volume_size_bytes", "Size of the \"volume\".\nIn bytes.", {}};
    size.samples.push_back({{{"mountpoint", "/"}, {"volume", "a\"b"}}, 100});
    size.samples.push_back({{{"mountpoint", "/data"}, {"volume", "data"}}, 2.5e12});
    size.samples.push_back({{{"mountpoint", "/"}, {"volume", "a\"b"}}, 7});  // same series again
    const MetricFamily empty{"velmora_docker_reclaimable_bytes", "Docker.", {}};
    const MetricFamily plain{"velmora_agent_interval_seconds", "Interval.", {{{}, 900}}};

    EXPECT_EQ(MetricsExposition::render({size, empty, plain}),
              "# HELP velmora_volume_size_bytes Size of the \"volume\".\\nIn bytes.\n"
              "# TYPE velmora_volume_size_bytes gauge\n"
              "velmora_volume_size_bytes{mountpoint=\"/\",volume=\"a\\\"b\"} 100\n"
              "velmora_volume_size_bytes{mountpoint=\"/data\",volume=\"data\"} 2500000000000\n"
              "# HELP velmora_agent_interval_seconds Interval.\n"
              "# TYPE velmora_agent_interval_seconds gauge\n"
              "velmora_agent_interval_seconds 900\n");
}

TEST(MetricsExposition, TextfileIsReplacedWholeAndOnlyInAnExistingFolder) {
    TemporaryFolder folder;
    MetricsExposition::writeTextfile(folder.root(), "velmora_a 1\n");
    MetricsExposition::writeTextfile(folder.root(), "velmora_a 2\n");
    EXPECT_EQ(AtomicFile::read(folder.root() / "velmora.prom"), "velmora_a 2\n");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.root()))
        names.push_back(entry.path().filename().string());
    EXPECT_THAT(names, ElementsAre("velmora.prom"));  // no temporary left for the collector to read

    // The collector's folder is never made up: a typo must show, not write somewhere unread.
    const auto missing = folder.root() / "no-such-folder";
    EXPECT_THROW(
        {
            try {
                MetricsExposition::writeTextfile(missing, "velmora_a 3\n");
            } catch (const FileError& error) {
                EXPECT_THAT(error.what(), HasSubstr(missing.string()));
                throw;
            }
        },
        FileError);
    EXPECT_FALSE(std::filesystem::exists(missing));
    const auto file = folder.write("plain-file", "x");
    EXPECT_THROW(MetricsExposition::writeTextfile(file, "velmora_a 3\n"), FileError);
    EXPECT_EQ(AtomicFile::read(folder.root() / "velmora.prom"), "velmora_a 2\n");
}

}  // namespace
}  // namespace corvel
