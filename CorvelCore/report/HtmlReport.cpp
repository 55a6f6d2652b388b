#include "report/HtmlReport.h"

#include "BrandLogo.h"
#include "common/ByteFormat.h"
#include "common/EnumTable.h"
#include "report/HtmlText.h"
#include "report/ReportPalette.h"
#include "report/ReportResources.h"
#include "report/TreemapHtml.h"

#include <fmt/format.h>

#include <cmath>

namespace corvel::HtmlReport {
namespace {

using HtmlText::escape;

std::string bytes(std::int64_t amount) {
    return escape(ByteFormat::string(amount));
}

template <class E>
std::string badge(E value) {
    return fmt::format("<span class=\"badge tone-{}\">{}</span>", ReportPalette::toneName(toneOf(value)),
                       escape(label(value)));
}

std::string percentText(double fraction) {
    return fmt::format("{:.0f}%", std::clamp(fraction, 0.0, 1.0) * 100);
}

std::string usageBar(const StorageVolume& volume) {
    if (volume.totalBytes < 1) return "<span class=\"muted\">size unknown</span>";
    const double used = std::clamp(volume.usedFraction(), 0.0, 1.0);
    const char* level = used >= 0.9 ? "bad" : used >= 0.8 ? "caution" : "good";
    return fmt::format(
        "<span class=\"bar\" role=\"img\" aria-label=\"{0} used\"><span class=\"fill tone-bg-{1}\" "
        "style=\"width:{2:.1f}%\"></span></span> {0}",
        percentText(used), level, used * 100);
}

std::string disksSection(const StorageSnapshot& snapshot) {
    std::string out = "<h3>Disks</h3>";
    if (snapshot.disks.empty()) return out + "<p class=\"muted\">No physical disks found.</p>";
    out +=
        "<table><thead><tr><th scope=\"col\">Disk</th><th scope=\"col\">Name</th><th scope=\"col\" "
        "class=\"num\">Size</th><th scope=\"col\">Connection</th><th scope=\"col\">SMART</th></tr></thead><tbody>";
    for (const auto& disk : snapshot.disks) {
        out += fmt::format("<tr><td>{}</td><td>{}</td><td class=\"num\">{}</td><td>{}</td><td>{}</td></tr>",
                           escape(disk.id), escape(disk.displayName()), bytes(disk.sizeBytes),
                           escape(disk.connectionLabel()), badge(disk.smartStatus));
    }
    return out + "</tbody></table>";
}

std::string volumesSection(const HtmlReportInput& input) {
    std::string out = "<h3>Volumes</h3>";
    if (input.snapshot.volumes.empty()) return out + "<p class=\"muted\">No mounted volumes found.</p>";
    out +=
        "<table><thead><tr><th scope=\"col\">Volume</th><th scope=\"col\">Mounted at</th><th scope=\"col\">File "
        "system</th><th scope=\"col\">Used</th><th scope=\"col\" class=\"num\">Free</th><th scope=\"col\" "
        "class=\"num\">Size</th><th scope=\"col\">Full in</th></tr></thead><tbody>";
    for (const auto& volume : input.snapshot.volumes) {
        std::string forecast = "<span class=\"muted\">no trend yet</span>";
        if (auto found = input.forecasts.find(volume.id); found != input.forecasts.end()) {
            forecast = fmt::format("about {} days", static_cast<long long>(std::lround(found->second)));
        }
        out += fmt::format(
            "<tr><td>{}</td><td>{}</td><td>{}</td><td>{}</td><td class=\"num\">{}</td><td class=\"num\">{}</td>"
            "<td>{}</td></tr>",
            escape(volume.name), escape(volume.mountPoint), escape(volume.fileSystemLabel()), usageBar(volume),
            volume.totalBytes < 1 ? std::string("–") : bytes(volume.availableBytes),
            volume.totalBytes < 1 ? std::string("–") : bytes(volume.totalBytes), forecast);
    }
    return out + "</tbody></table>";
}

std::string healthSection(const HtmlReportInput& input) {
    std::string out = "<section id=\"health\"><h2>Health</h2><div class=\"dimensions\">";
    for (const auto& dimension : input.health) {
        out += fmt::format("<article class=\"dimension\"><h3>{} {}</h3><p>{}</p>", escape(label(dimension.dimension)),
                           badge(dimension.status), escape(dimension.summary));
        if (!dimension.evidence.empty()) {
            out += "<ul>";
            for (const auto& line : dimension.evidence) out += "<li>" + escape(line) + "</li>";
            out += "</ul>";
        }
        out += "</article>";
    }
    out += "</div><h3>Findings</h3>";
    if (input.report.findings.empty()) return out + "<p>No findings: nothing needs attention.</p></section>";
    out += "<ul class=\"findings\">";
    for (const auto& finding : input.report.findings) {
        out +=
            fmt::format("<li>{} <strong>{}</strong> <span class=\"muted\">({})</span><br>{}", badge(finding.severity),
                        escape(finding.title), escape(finding.subjectName), escape(finding.detail));
        if (finding.recommendation) out += "<br><em>" + escape(*finding.recommendation) + "</em>";
        out += "</li>";
    }
    return out + "</ul></section>";
}

std::string insightsSection(const HtmlReportInput& input) {
    std::string out = "<section id=\"insights\"><h2>Insights</h2>";
    if (input.insights.empty()) return out + "<p>No insights: nothing worth acting on was found.</p></section>";
    out += "<ol class=\"insights\">";
    for (const auto& insight : input.insights) {
        out += fmt::format("<li>{} <strong>{}</strong>", badge(insight.severity), escape(insight.title));
        if (insight.bytes) out += " <span class=\"muted\">" + bytes(*insight.bytes) + "</span>";
        out += "<br>" + escape(insight.detail) + "</li>";
    }
    return out + "</ol></section>";
}

std::string dockerSection(const DockerInventory& docker) {
    std::string out = "<section id=\"docker\"><h2>Docker</h2><p>";
    out += docker.serverVersion ? "Engine " + escape(*docker.serverVersion) : std::string("The engine did not answer.");
    out += fmt::format(" · {} containers, {} images, {} volumes</p>", docker.containers.size(), docker.images.size(),
                       docker.volumes.size());
    if (!docker.diskUsage.empty()) {
        out +=
            "<table><thead><tr><th scope=\"col\">Type</th><th scope=\"col\" class=\"num\">Size</th><th "
            "scope=\"col\" class=\"num\">Reclaimable</th></tr></thead><tbody>";
        for (const auto& line : docker.diskUsage) {
            out += fmt::format("<tr><td>{}</td><td class=\"num\">{}</td><td class=\"num\">{}</td></tr>",
                               escape(line.type), bytes(line.sizeBytes), bytes(line.reclaimableBytes));
        }
        out += "</tbody></table>";
    }
    for (const auto& error : docker.errors) out += "<p class=\"tone-caution\">" + escape(error) + "</p>";
    return out + "</section>";
}

std::string sortableHeader(const char* title, const char* kind, bool numeric = false) {
    return fmt::format("<th scope=\"col\" data-sort=\"{}\"{}>{}</th>", kind, numeric ? " class=\"num\"" : "", title);
}

std::string legend(const SpaceNode& tree) {
    std::vector<bool> seen(allCases<SpaceCategory>().size(), false);
    std::vector<const SpaceNode*> stack{&tree};
    while (!stack.empty()) {
        const SpaceNode* node = stack.back();
        stack.pop_back();
        const auto cases = allCases<SpaceCategory>();
        for (std::size_t i = 0; i < cases.size(); ++i) {
            if (node != &tree && cases[i] == node->classification.category) seen[i] = true;
        }
        for (const auto& child : node->children) stack.push_back(&child);
    }
    std::string out = "<ul class=\"legend\">";
    const auto cases = allCases<SpaceCategory>();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (!seen[i]) continue;
        out += fmt::format("<li><span class=\"swatch\" style=\"background:{}\"></span>{}</li>",
                           ReportPalette::categoryColour(cases[i]), escape(label(cases[i])));
    }
    return out + "</ul>";
}

std::string spaceTables(const SpaceScanReport& scan) {
    std::string out = "<h3>Largest files</h3>";
    if (scan.largestFiles.empty()) {
        out += "<p class=\"muted\">No files measured.</p>";
    } else {
        out += "<table class=\"sortable\" id=\"largest-files\"><thead><tr>" + sortableHeader("Path", "text") +
               sortableHeader("Allocated", "number", true) + sortableHeader("Exclusive", "number", true) +
               sortableHeader("Category", "text") + sortableHeader("Risk", "text") + "</tr></thead><tbody>";
        for (const auto& file : scan.largestFiles) {
            out += fmt::format(
                "<tr><td>{}</td><td class=\"num\" data-value=\"{}\">{}</td><td class=\"num\" data-value=\"{}\">{}</td>"
                "<td>{}</td><td>{}</td></tr>",
                escape(file.path), file.allocatedBytes, bytes(file.allocatedBytes), file.exclusiveBytes,
                bytes(file.exclusiveBytes), escape(label(file.classification.category)),
                badge(file.classification.risk));
        }
        out += "</tbody></table>";
    }
    out += "<h3>Duplicate groups</h3>";
    if (scan.duplicates.empty()) return out + "<p class=\"muted\">No duplicates found (files of 1 MB and more).</p>";
    out += "<table class=\"sortable\" id=\"duplicates\"><thead><tr>" + sortableHeader("Reclaimable", "number", true) +
           sortableHeader("Copies", "number", true) + sortableHeader("Size of each", "number", true) +
           sortableHeader("Paths", "text") + "</tr></thead><tbody>";
    for (const auto& group : scan.duplicates) {
        std::string paths;
        for (const auto& path : group.paths) paths += (paths.empty() ? "" : "<br>") + escape(path);
        out += fmt::format(
            "<tr><td class=\"num\" data-value=\"{}\">{}</td><td class=\"num\" data-value=\"{}\">{}</td>"
            "<td class=\"num\" data-value=\"{}\">{}</td><td>{}</td></tr>",
            group.reclaimableBytes(), bytes(group.reclaimableBytes()), group.paths.size(), group.paths.size(),
            group.logicalBytes, bytes(group.logicalBytes), paths);
    }
    return out + "</tbody></table>";
}

std::string spaceSection(const std::optional<ReportSpace>& space) {
    std::string out = "<section id=\"space\"><h2>Space</h2>";
    if (!space) {
        return out +
               "<p>No space scan yet. Run <code>velmora scan</code>, or give the report a folder to scan.</p>"
               "</section>";
    }
    out += fmt::format("<p><strong>{}</strong>: {} allocated", escape(space->tree.path),
                       bytes(space->tree.allocatedBytes));
    if (space->scannedAt) out += ", scanned " + escape(ISO8601::format(*space->scannedAt));
    if (space->scan) {
        out += fmt::format(", {} files in {} folders", space->scan->fileCount, space->scan->directoryCount);
        if (space->scan->wasCancelled)
            out += " <strong class=\"tone-caution\">(partial: the scan was interrupted)</strong>";
    }
    out +=
        ".</p><p class=\"muted screen-only\">Hover a tile for its details; click a folder to zoom in, and the "
        "path above the map to zoom out.</p>";
    out += TreemapHtml::render(space->tree) + legend(space->tree);
    if (space->scan) {
        out += spaceTables(*space->scan);
    } else {
        out +=
            "<p class=\"muted\">The largest files and duplicate groups are listed when the report scans a folder "
            "itself.</p>";
    }
    return out + "</section>";
}

// HTML places an inline <svg> in the SVG namespace by itself; the attribute naming it would be the
// page's only web address, and the page promises none.
std::string inlineLogo() {
    std::string svg(BrandLogo::svg());
    constexpr std::string_view ns = " xmlns=\"http://www.w3.org/2000/svg\"";
    if (const auto at = svg.find(ns); at != std::string::npos) svg.erase(at, ns.size());
    return svg;
}

std::string body(const HtmlReportInput& input) {
    std::string out = fmt::format(
        "<header><span class=\"logo\" aria-hidden=\"true\">{}</span><div><h1>Velmora report</h1><p>{} · generated {} · "
        "snapshot of {}</p></div></header><main>",
        inlineLogo(), escape(input.source), escape(ISO8601::format(input.generatedAt)),
        escape(ISO8601::format(input.snapshot.capturedAt)));
    out += "<section id=\"machine\"><h2>Machine</h2>" + disksSection(input.snapshot) + volumesSection(input);
    for (const auto& warning : input.snapshot.warnings) out += "<p class=\"tone-caution\">" + escape(warning) + "</p>";
    out += "</section>";
    out += healthSection(input) + insightsSection(input);
    if (input.docker) out += dockerSection(*input.docker);
    out += spaceSection(input.space);
    if (!input.notes.empty()) {
        out += "<section id=\"notes\"><h2>Notes</h2><ul>";
        for (const auto& note : input.notes) out += "<li>" + escape(note) + "</li>";
        out += "</ul></section>";
    }
    out += std::string("</main><footer><p>") + escape(footerText) + "</p></footer>";
    return out;
}

}  // namespace

Json data(const HtmlReportInput& input) {
    Json document{{"source", input.source},      {"generatedAt", input.generatedAt}, {"snapshot", input.snapshot},
                  {"report", input.report},      {"health", input.health},           {"insights", input.insights},
                  {"forecasts", input.forecasts}};
    if (input.docker) document["docker"] = *input.docker;
    if (input.space) {
        document["space"] = Json{{"tree", input.space->tree}};
        if (input.space->scan) document["space"]["scan"] = *input.space->scan;
    }
    return document;
}

std::string fill(std::string_view page, const std::map<std::string, std::string>& values) {
    std::string out;
    out.reserve(page.size());
    std::size_t at = 0;
    while (at < page.size()) {
        const std::size_t open = page.find("{{", at);
        if (open == std::string_view::npos) break;
        const std::size_t close = page.find("}}", open + 2);
        if (close == std::string_view::npos) break;
        out.append(page.substr(at, open - at));
        const auto found = values.find(std::string(page.substr(open + 2, close - open - 2)));
        if (found == values.end()) {
            out.append(page.substr(open, close + 2 - open));
        } else {
            out += found->second;
        }
        at = close + 2;
    }
    out.append(page.substr(at));
    return out;
}

std::string render(const HtmlReportInput& input) {
    return fill(ReportResources::report_html(), {{"title", escape("Velmora report: " + input.source)},
                                                 {"palette", ReportPalette::cssVariables()},
                                                 {"style", std::string(ReportResources::report_css())},
                                                 {"body", body(input)},
                                                 {"data", HtmlText::scriptJson(data(input))},
                                                 {"script", std::string(ReportResources::report_js())}});
}

}  // namespace corvel::HtmlReport
