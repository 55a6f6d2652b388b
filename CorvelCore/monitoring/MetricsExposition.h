// Figures in the plain-text format that Prometheus scrapes and the node exporter's textfile
// collector reads: per family one "# HELP" and one "# TYPE" line, then one line per sample with its
// labels. Label values and help texts are escaped as the format requires, and bytes that are not
// UTF-8 become U+FFFD, so any volume name still gives a document a scraper accepts.
//
//   MetricFamily free{"velmora_volume_available_bytes", "Bytes free on the volume."};
//   free.samples.push_back({{{"mountpoint", "/"}}, 1.5e11});
//   MetricsExposition::writeTextfile(folder, MetricsExposition::render({free}));   // folder/velmora.prom
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvel {

struct MetricSample {
    std::vector<std::pair<std::string, std::string>> labels;  // name, value; in output order
    double value = 0;

    bool operator==(const MetricSample&) const = default;
};

struct MetricFamily {
    std::string name;
    std::string help;  // every family is a gauge: each figure is a reading, none only grows
    std::vector<MetricSample> samples;

    bool operator==(const MetricFamily&) const = default;
};

namespace MetricsExposition {

// The name the textfile collector reads; it skips every file not ending in ".prom", which is why
// the atomic write's temporary (".velmora.prom.XXXXXX") is never read half-written.
inline constexpr const char* textfileName = "velmora.prom";

// Families without samples are left out: a family with no figure must not look like one. A
// sample repeating an earlier one's labels in its family is left out too.
std::string render(const std::vector<MetricFamily>& families);

// Backslash, double quote and line feed escaped; invalid UTF-8 replaced.
std::string escapeLabelValue(std::string_view text);
// Backslash and line feed escaped; invalid UTF-8 replaced.
std::string escapeHelp(std::string_view text);
// Shortest text that reads back as the same double; "NaN", "+Inf", "-Inf".
std::string formatValue(double value);

// Replaces `folder`/velmora.prom atomically. The folder must exist and be writable: it is the
// collector's, so it is never created here. Throws FileError naming the folder; the previous
// file is then untouched.
void writeTextfile(const std::filesystem::path& folder, std::string_view text);

}  // namespace MetricsExposition
}  // namespace corvel
