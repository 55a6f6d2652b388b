// The footprint commands: `footprint` measures one folder tree clone-aware (logical, allocated
// and unique physical bytes, overall and per area); `dev` surveys the folders where developer
// tools keep their caches, SDKs and toolchains.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"

#include "common/ByteFormat.h"
#include "common/DataFolder.h"
#include "space/DirectorySizer.h"
#include "space/FootprintLocation.h"
#include "space/PhysicalFootprint.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace corvel::cli {
namespace {

namespace fs = std::filesystem;

struct FootprintOptions {
    std::string path;
    std::vector<std::string> areas;
};

// Progress goes to a terminal's stderr on one line that is rewritten, then erased.

bool isInside(const std::string& path, const std::string& folder) {
    if (folder == "/") return path.size() > 1 && path.front() == '/';
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/';
}

// The folder's real path: the walk does not follow links and stays on the root's volume, so a
// root given through a link (a cache moved to another disk) must be measured where it lies.
std::string requireFolder(const std::string& typed, const std::string& what) {
    std::error_code error;
    const auto status = fs::status(typed, error);
    if (error || status.type() == fs::file_type::not_found) throw UsageError(what + "'" + typed + "': no such folder");
    if (status.type() != fs::file_type::directory) throw UsageError(what + "'" + typed + "': not a folder");
    const fs::path resolved = fs::canonical(typed, error);
    return PhysicalFootprint::standardizedPath(error ? fs::path(typed) : resolved);
}

std::vector<std::string> totalsCells(const std::string& name, const PhysicalFootprint::Totals& totals) {
    return {name,
            ByteFormat::string(totals.logicalBytes),
            ByteFormat::string(totals.allocatedBytes),
            ByteFormat::string(totals.uniquePhysicalBytes),
            groupedCount(totals.fileCount),
            groupedCount(totals.unreadableFiles)};
}

void printFootprint(CliContext& context, const std::string& root, const PhysicalFootprint::Result& result) {
    const Style& style = context.style();
    std::ostream& out = context.out();
    out << style.bold(root) << '\n';
    using Align = Table::Align;
    Table table({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right});
    table.addRow({"AREA", "LOGICAL", "ALLOCATED", "UNIQUE PHYSICAL", "FILES", "UNREADABLE"});
    table.addRow(totalsCells("Total", result.total));
    for (const auto& [area, totals] : result.areas) table.addRow(totalsCells(area, totals));
    table.print(out, "  ");

    const std::int64_t shared = result.total.allocatedBytes - result.total.uniquePhysicalBytes;
    if (shared > 0) out << "  Shared by clones: " << ByteFormat::string(shared) << '\n';
    out << "  Denied folders: " << result.deniedDirectories << '\n';
    if (result.wasCancelled) out << style.yellow("  Partial: the measurement was stopped before the end.") << '\n';
}

void runFootprint(CliContext& context, const FootprintOptions& options) {
    const std::string root = requireFolder(options.path, "");
    std::set<std::string> areas;
    for (const std::string& typed : options.areas) {
        const std::string area = requireFolder(typed, "--area ");
        if (area != root && !isInside(area, root))
            throw UsageError("--area '" + typed + "': not inside '" + options.path + "'");
        areas.insert(area);
    }

    ProgressLine progress(context);
    progress.show("Measuring " + root + " …");
    const auto result = PhysicalFootprint::measure(
        root, areas,
        [&](std::int64_t files) { progress.show("Measuring " + root + " … " + std::to_string(files) + " files"); },
        [] { return false; });
    progress.clear();

    if (context.json()) {
        context.printJson(result);
        return;
    }
    printFootprint(context, root, result);
}

void addFootprintCommand(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<FootprintOptions>();
    auto* command = app.add_subcommand(
        "footprint",
        "Measure a folder tree clone-aware: logical, allocated and unique physical bytes, overall and per area");
    command->add_option("path", options->path, "The folder to measure")->required()->type_name("PATH");
    command->add_option("--area", options->areas, "A folder inside PATH to account separately (repeatable)")
        ->type_name("DIR");
    command->callback([&context, options] { runFootprint(context, *options); });
}

struct DevRow {
    FootprintLocation location;
    std::optional<DirectoryMeasurement> measurement;
};

void printDev(CliContext& context, const std::vector<DevRow>& rows) {
    const Style& style = context.style();
    using Align = Table::Align;
    Table table({Align::left, Align::left, Align::right, Align::right, Align::left});
    table.addRow({"LOCATION", "CATEGORY", "SIZE", "FILES", "NOTE"});
    std::int64_t total = 0;
    int present = 0;
    for (const DevRow& row : rows) {
        const std::string category(rawValue(row.location.category));
        if (!row.measurement) {
            table.addRow({row.location.name, category, style.dim("not present"), "", style.dim(row.location.note)});
            continue;
        }
        total += row.measurement->allocatedBytes;
        ++present;
        table.addRow({row.location.name, category, ByteFormat::string(row.measurement->allocatedBytes),
                      groupedCount(row.measurement->fileCount), style.dim(row.location.note)});
    }
    table.print(context.out());
    context.out() << '\n'
                  << "Total: " << ByteFormat::string(total) << " in " << present << " of " << rows.size()
                  << " locations\n";
}

void runDev(CliContext& context) {
    const TimePoint now = context.machine().now();
    std::vector<DevRow> rows;
    {
        ProgressLine progress(context);
        for (auto& location : FootprintLocation::defaults(context.machine().home(), context.machine().platform())) {
            progress.show("Measuring " + location.name + " …");
            auto measurement = DirectorySizer::measure(location.path, now, [] { return false; });
            rows.push_back({std::move(location), measurement});
        }
    }
    if (context.json()) {
        Json document = Json::array();
        for (const DevRow& row : rows) {
            Json entry{{"location", row.location}};
            putOptional(entry, "measurement", row.measurement);
            document.push_back(std::move(entry));
        }
        context.printJson(document);
        return;
    }
    printDev(context, rows);
}

void addDevCommand(CLI::App& app, CliContext& context) {
    auto* command = app.add_subcommand(
        "dev",
        "Measure the folders where developer tools keep caches, SDKs and toolchains (missing ones are "
        "shown as not present)");
    command->callback([&context] { runDev(context); });
}

}  // namespace

void registerFootprintCommands(CLI::App& app, CliContext& context) {
    addFootprintCommand(app, context);
    addDevCommand(app, context);
}

}  // namespace corvel::cli
