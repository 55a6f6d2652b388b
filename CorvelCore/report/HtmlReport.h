// One self-contained HTML page about a machine: its disks and volumes (usage bars, forecasts),
// the findings and the five health dimensions, the ranked insights, the Docker summary, and the
// space analysis of a scan (a zoomable treemap coloured by category, the largest files and the
// duplicate groups as sortable tables). Styles, script and data are inside the page and its
// content security policy forbids every request, so it opens offline and sends nothing anywhere.
// Every text from the machine is escaped; the tables and the treemap work without the script,
// which only adds sorting.
//
//   HtmlReportInput input{.source = "this machine", .generatedAt = machine.now(), .snapshot = snapshot};
//   AtomicFile::write(file, HtmlReport::render(input));
#pragma once

#include "common/ISO8601.h"
#include "diagnostics/DiagnosticReport.h"
#include "diagnostics/DimensionAssessment.h"
#include "docker/DockerInventory.h"
#include "insights/Insight.h"
#include "space/SpaceNode.h"
#include "space/SpaceScanReport.h"
#include "storage/StorageSnapshot.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

// The space part of a report: a tree already bounded for the page, and, when the scan ran for
// this report, its full report (largest files, duplicates, totals).
struct ReportSpace {
    SpaceNode tree;
    std::optional<SpaceScanReport> scan;
    std::optional<TimePoint> scannedAt;
    bool operator==(const ReportSpace&) const = default;
};

struct HtmlReportInput {
    std::string source;  // "this machine" or the recording's name
    TimePoint generatedAt{};
    StorageSnapshot snapshot;
    DiagnosticReport report;
    std::vector<DimensionAssessment> health;
    std::vector<Insight> insights;            // ranked
    std::map<std::string, double> forecasts;  // volume id -> days until full
    std::optional<DockerInventory> docker;    // absent: no Docker on the machine
    std::optional<ReportSpace> space;         // absent: no scan yet
    std::vector<std::string> notes;           // inputs that could not be read
};

namespace HtmlReport {

inline constexpr const char* footerText =
    "Made by Velmora. Everything this page shows is inside this one file: it loads nothing and "
    "makes no network request of any kind.";

std::string render(const HtmlReportInput& input);

// The JSON block the page carries: the same records `--json` prints.
Json data(const HtmlReportInput& input);

// `page` with each "{{name}}" replaced by its value in one pass, so a value that itself contains
// "{{…}}" stays as it is; unknown placeholders are left unchanged.
std::string fill(std::string_view page, const std::map<std::string, std::string>& values);

}  // namespace HtmlReport
}  // namespace corvel
