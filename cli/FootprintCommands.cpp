// The footprint commands: `footprint` measures one folder tree clone-aware (logical, allocated
// and unique physical bytes, overall and per area); `dev` surveys the folders where developer
// tools keep their caches, SDKs and toolchains.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"

#include "common/ByteFormat.h"
#include "common/DataFolder.h"
#include "common/Text.h"
#include "space/DirectorySizer.h"
#include "space/FootprintLocation.h"
#include "space/PhysicalFootprint.h"

#include <algorithm>
#include <atomic>
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
    bool showDenied = false;
};

// "Measuring ~/.npm: 12,345 files, 1.2 GB  /deepest/folder" on the progress line.
std::string progressText(const std::string& what, const ScanProgress& progress) {
    const ScanProgress::Snapshot now = progress.snapshot();
    std::string line = "Measuring " + terminalSafe(what) + ": " + groupedCount(now.files) + " files, " +
                       ByteFormat::string(now.allocatedBytes);
    if (!now.currentFolder.empty()) line += "  " + terminalSafe(now.currentFolder);
    return line;
}

// What could not be read: a count per reason, and with --show-denied the folders by name.
void printFailures(CliContext& context, const WalkFailures& failures, bool showDenied, const std::string& indent) {
    std::ostream& out = context.out();
    out << indent << "Unreadable folders: " << groupedCount(failures.folders());
    if (failures.files() > 0) out << ", unreadable files: " << groupedCount(failures.files());
    for (const FailureCount& count : failures.byError)
        out << context.style().dim("  " + count.reason + ": " + groupedCount(count.folders + count.files));
    out << '\n';
    if (!showDenied) {
        if (failures.folders() > 0) out << context.style().dim(indent + "(--show-denied names them)") << '\n';
        return;
    }
    for (const std::string& path : failures.deniedFolders) out << indent << "  " << terminalSafe(path) << '\n';
    const auto named = static_cast<std::int64_t>(failures.deniedFolders.size());
    if (failures.folders() > named)
        out << indent << "  … and " << groupedCount(failures.folders() - named) << " more\n";
}

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

void printFootprint(CliContext& context, const std::string& root, const PhysicalFootprint::Result& result,
                    bool showDenied) {
    const Style& style = context.style();
    std::ostream& out = context.out();
    out << style.bold(terminalSafe(root)) << '\n';
    using Align = Table::Align;
    Table table({Align::left, Align::right, Align::right, Align::right, Align::right, Align::right});
    table.addRow({"AREA", "LOGICAL", "ALLOCATED", "UNIQUE PHYSICAL", "FILES", "UNREADABLE"});
    table.addRow(totalsCells("Total", result.total));
    for (const auto& [area, totals] : result.areas) table.addRow(totalsCells(terminalSafe(area), totals));
    table.print(out, "  ");

    const std::int64_t shared = result.total.allocatedBytes - result.total.uniquePhysicalBytes;
    if (shared > 0) out << "  Shared by clones: " << ByteFormat::string(shared) << '\n';
    printFailures(context, result.failures, showDenied, "  ");
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

    ScanProgress progress;
    const auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) { return PhysicalFootprint::measure(root, areas, progress, isCancelled); },
        [&] { return progressText(root, progress); });
    const PhysicalFootprint::Result& result = outcome.result;
    // As scan: a root that cannot be read at all is a failure, not a tree of 0 bytes.
    if (result.rootError) throw CommandFailure("cannot measure " + terminalSafe(root) + ": " + *result.rootError);

    if (context.json()) {
        context.printJson(result);
    } else {
        printFootprint(context, root, result, options.showDenied);
    }
    if (outcome.interrupted || result.wasCancelled)
        throw CommandFailure("footprint interrupted; the figures above are partial");
}

void addFootprintCommand(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<FootprintOptions>();
    auto* command = app.add_subcommand(
        "footprint",
        "Measure a folder tree clone-aware: logical, allocated and unique physical bytes, overall and per area");
    command->add_option("path", options->path, "The folder to measure")->required()->type_name("PATH");
    command->add_option("--area", options->areas, "A folder inside PATH to account separately (repeatable)")
        ->type_name("DIR")
        ->allow_extra_args(false);
    command->add_flag("--show-denied", options->showDenied, "Name the folders that could not be read");
    command->callback([&context, options] { runFootprint(context, *options); });
}

struct DevRow {
    FootprintLocation location;
    std::optional<DirectoryMeasurement> measurement;
};

void printDev(CliContext& context, const std::vector<DevRow>& rows, bool showDenied) {
    const Style& style = context.style();
    using Align = Table::Align;
    Table table({Align::left, Align::left, Align::right, Align::right, Align::left});
    table.addRow({"LOCATION", "CATEGORY", "SIZE", "FILES", "NOTE"});
    std::int64_t total = 0;
    int present = 0;
    WalkFailures failures;
    for (const DevRow& row : rows) {
        const std::string category(rawValue(row.location.category));
        if (!row.measurement) {
            table.addRow({row.location.name, category, style.dim("not present"), "", style.dim(row.location.note)});
            continue;
        }
        total += row.measurement->allocatedBytes;
        ++present;
        failures.merge(row.measurement->failures);
        table.addRow({row.location.name, category, ByteFormat::string(row.measurement->allocatedBytes),
                      groupedCount(row.measurement->fileCount), style.dim(row.location.note)});
    }
    table.print(context.out());
    context.out() << '\n'
                  << "Total: " << ByteFormat::string(total) << " in " << present << " of " << rows.size()
                  << " locations\n";
    if (failures.folders() + failures.files() > 0) printFailures(context, failures, showDenied, "");
}

void runDev(CliContext& context, bool showDenied) {
    const TimePoint now = context.machine().now();
    auto locations = FootprintLocation::defaults(context.machine().home(), context.machine().platform());
    ScanProgress progress;
    std::atomic<std::size_t> current{0};
    // Locations not reached before Ctrl-C are left out of the rows rather than shown as absent.
    const auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) {
            std::vector<DevRow> measured;
            for (std::size_t i = 0; i < locations.size() && !isCancelled(); ++i) {
                current = i;
                measured.push_back(
                    {locations[i], DirectorySizer::measure(locations[i].path, now, progress, isCancelled)});
            }
            return measured;
        },
        [&] { return progressText(locations[std::min(current.load(), locations.size() - 1)].name, progress); });
    const std::vector<DevRow>& rows = outcome.result;
    const bool interrupted = outcome.interrupted || std::any_of(rows.begin(), rows.end(), [](const DevRow& row) {
                                 return row.measurement && row.measurement->wasCancelled;
                             });
    if (context.json()) {
        Json document = Json::array();
        for (const DevRow& row : rows) {
            Json entry{{"location", row.location}};
            putOptional(entry, "measurement", row.measurement);
            document.push_back(std::move(entry));
        }
        context.printJson(document);
    } else {
        printDev(context, rows, showDenied);
    }
    if (interrupted) throw CommandFailure("dev interrupted; the figures above are partial");
}

void addDevCommand(CLI::App& app, CliContext& context) {
    auto* command = app.add_subcommand(
        "dev",
        "Measure the folders where developer tools keep caches, SDKs and toolchains (missing ones are "
        "shown as not present)");
    auto showDenied = std::make_shared<bool>(false);
    command->add_flag("--show-denied", *showDenied, "Name the folders that could not be read");
    command->callback([&context, showDenied] { runDev(context, *showDenied); });
}

}  // namespace

void registerFootprintCommands(CLI::App& app, CliContext& context) {
    addFootprintCommand(app, context);
    addDevCommand(app, context);
}

}  // namespace corvel::cli
