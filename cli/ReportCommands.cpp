// velmora report --html FILE [PATH]: one self-contained HTML page about this machine (or a
// recorded one) for people who would rather look, or to hand to a colleague. With PATH the folder
// is scanned now, with progress and Ctrl-C; without it the page shows the last scan's summary.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"
#include "SettingsCommands.h"
#include "common/AtomicFile.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "report/HtmlReport.h"
#include "report/MachineReport.h"
#include "report/ReportTree.h"
#include "space/ScanReporting.h"
#include "space/SpaceScanner.h"
#include "space/SpaceTreeBuilder.h"

#include <fmt/format.h>

#include <filesystem>

namespace corvel::cli {
namespace {

struct ReportCommandOptions {
    std::string html;
    std::string path;
    std::size_t maxNodes = ReportTree::defaultMaxNodes;
};

ReportSpace scanForReport(CliContext& context, const std::string& root) {
    std::error_code error;
    if (!std::filesystem::exists(root, error)) throw UsageError("cannot scan " + root + ": no such file or folder");
    if (!std::filesystem::is_directory(root, error)) throw UsageError("cannot scan " + root + ": not a folder");
    ScanProgress progress;
    ScanTree tree;
    try {
        auto outcome = runLongWork(
            context,
            [&](const CancelCheck& isCancelled) { return SpaceScanner::scan(root, {}, progress, isCancelled); },
            [&] {
                const auto now = progress.snapshot();
                return fmt::format("Scanning: {} files, {}", groupedCount(now.files),
                                   ByteFormat::string(now.allocatedBytes));
            });
        tree = std::move(outcome.result);
        if (outcome.interrupted) tree.wasCancelled = true;
    } catch (const SpaceScanError& failure) {
        throw CommandFailure(failure.what());
    }
    const SpaceCatalog catalog = context.machine().catalog();
    const SpaceScanReport report = ScanReporting::report(tree, catalog);
    // Deep and wide, then bounded to --max-nodes, largest first. Wider than that is wasted: a child
    // below 0.4 % of its folder, or past its folder's 32nd, almost never ranks among the largest
    // few thousand, and emitting it cost as much as the scan.
    SpaceTreeOptions treeOptions;
    treeOptions.maxDepth = 12;
    treeOptions.maxChildren = 32;
    treeOptions.minimumShare = 0.004;
    SpaceTreeBuilder builder;
    ScanReporting::emit(tree, catalog, treeOptions, report, builder);
    return ReportSpace{builder.root(), report, context.machine().now()};
}

void runReport(CliContext& context, const ReportCommandOptions& options) {
    std::optional<ReportSpace> space;
    if (!options.path.empty()) space = scanForReport(context, options.path);
    const auto input =
        MachineReport::gather(context.machine(), loadSettings(context), std::move(space), options.maxNodes);
    const std::string page = HtmlReport::render(input);
    try {
        AtomicFile::write(options.html, page);
    } catch (const std::exception& failure) {
        throw CommandFailure(std::string("could not write the report: ") + failure.what());
    }
    if (context.json()) {
        context.printJson(Json{{"file", options.html}, {"bytes", page.size()}});
        return;
    }
    context.out() << "Wrote " << terminalSafe(options.html) << " ("
                  << ByteFormat::string(static_cast<std::int64_t>(page.size()))
                  << "). It opens offline in any browser.\n";
    if (input.space && input.space->scan && input.space->scan->wasCancelled)
        throw CommandFailure("scan interrupted; the report's space figures are partial");
}

}  // namespace

void registerReportCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<ReportCommandOptions>();
    auto* report = app.add_subcommand("report", "Write a self-contained HTML report of this machine");
    report->add_option("--html", options->html, "The HTML file to write (replaced whole)")
        ->type_name("FILE")
        ->required()
        ->expected(1);
    report->add_option("path", options->path, "A folder to scan now for the space part (default: the last scan)")
        ->type_name("PATH");
    report
        ->add_option("--max-nodes", options->maxNodes,
                     fmt::format("Folders and files drawn in the treemap before the rest is folded (default {})",
                                 ReportTree::defaultMaxNodes))
        ->check(CLI::Range(1, 1000000))
        ->expected(1);
    report->callback([&context, options] { runReport(context, *options); });
}

}  // namespace corvel::cli
