// velmora scan [PATH]: where the space under a folder goes. The walk runs on its own thread while
// this one shows progress on a terminal and waits for Ctrl-C; an interrupted scan still prints
// what it measured, marked as partial, and saves the summary the insights read.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"
#include "common/AtomicFile.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "report/NcduExport.h"
#include "space/ScanReporting.h"
#include "space/SpaceJsonWriter.h"
#include "space/SpaceScanner.h"
#include "space/SpaceSummary.h"
#include "space/SpaceTreeBuilder.h"

#include <fmt/format.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <thread>

namespace corvel::cli {
namespace {

struct ScanCommandOptions {
    std::string path;
    int depth = 2;
    int top = 10;
    bool oneFileSystem = true;
    std::vector<std::string> excludes;
    unsigned threads = 0;
    bool duplicates = true;
    std::string exportFile;
};

std::string progressLine(const ScanProgress::Snapshot& now, double seconds) {
    if (now.hashCandidates > 0)
        return fmt::format("Duplicates: hashing {} of {} candidates", groupedCount(now.hashedCandidates),
                           groupedCount(now.hashCandidates));
    const double rate = seconds > 0 ? static_cast<double>(now.files) / seconds : 0;
    std::string line =
        fmt::format("Scanning: {} files, {}, {} files/s", groupedCount(now.files),
                    ByteFormat::string(now.allocatedBytes), groupedCount(static_cast<std::int64_t>(rate)));
    if (!now.currentFolder.empty()) {
        constexpr std::size_t room = 50;
        std::string folder = ScanReporting::displayText(now.currentFolder);
        if (folder.size() > room) folder = "…" + folder.substr(folder.size() - room);
        line += "  " + folder;
    }
    return line;
}

std::string riskText(const Style& style, CleanupRisk risk) {
    return style.tone(toneOf(risk), label(risk));
}

void addTreeRows(Table& table, const Style& style, const SpaceNode& node, const SpaceNode* parent, int depth) {
    const double share = parent && parent->allocatedBytes > 0
                             ? static_cast<double>(node.allocatedBytes) / static_cast<double>(parent->allocatedBytes)
                             : 1.0;
    std::string name = std::string(static_cast<std::size_t>(depth) * 2, ' ');
    if (node.isAggregate()) {
        name += style.dim("(" + node.name + ")");
    } else {
        name += depth == 0 ? node.path : node.name + (node.isDirectory ? "/" : "");
        if (node.accessDenied) name += style.red("  [unreadable]");
    }
    table.addRow({ByteFormat::string(node.allocatedBytes), ByteFormat::string(node.exclusiveBytes), percent(share),
                  std::string(rawValue(node.classification.category)), riskText(style, node.classification.risk),
                  name});
    for (const auto& child : node.children) addTreeRows(table, style, child, &node, depth + 1);
}

void printHuman(CliContext& context, const SpaceNode& tree, const SpaceScanReport& report, std::size_t top,
                double seconds, bool searchedDuplicates) {
    auto& out = context.out();
    const auto& style = context.style();
    out << style.bold("Scanned " + report.root) << fmt::format(" in {:.2f} s: ", seconds)
        << groupedCount(report.fileCount) << " files in " << groupedCount(report.directoryCount) << " folders, "
        << ByteFormat::string(report.allocatedBytes) << " allocated (" << ByteFormat::string(report.exclusiveBytes)
        << " exclusive, " << ByteFormat::string(report.logicalBytes) << " logical)\n";
    if (report.wasCancelled)
        out << style.yellow("PARTIAL: the scan was interrupted; figures cover what was measured.") << '\n';

    out << '\n' << style.bold("Biggest folders") << '\n';
    Table treeTable({Table::Align::right, Table::Align::right, Table::Align::right});
    treeTable.addRow({"ALLOCATED", "EXCLUSIVE", "SHARE", "CATEGORY", "RISK", "PATH"});
    addTreeRows(treeTable, style, tree, nullptr, 0);
    treeTable.print(out, "  ");

    if (!report.largestFiles.empty()) {
        out << '\n' << style.bold("Largest files") << '\n';
        Table files({Table::Align::right, Table::Align::right});
        files.addRow({"ALLOCATED", "EXCLUSIVE", "CATEGORY", "RISK", "PATH"});
        for (std::size_t i = 0; i < report.largestFiles.size() && i < top; ++i) {
            const auto& file = report.largestFiles[i];
            files.addRow({ByteFormat::string(file.allocatedBytes), ByteFormat::string(file.exclusiveBytes),
                          std::string(rawValue(file.classification.category)),
                          riskText(style, file.classification.risk), file.path});
        }
        files.print(out, "  ");
    }

    out << '\n' << style.bold("Duplicate candidates") << '\n';
    if (!searchedDuplicates) {
        out << "  not searched (--no-duplicates)\n";
    } else if (report.duplicates.empty()) {
        out << "  none found (files of 1 MB and more, same length and same SHA-256)\n";
    }
    if (searchedDuplicates && report.sparseFilesLeftOut > 0)
        out << style.dim(fmt::format("  {} sparse files left out (mostly holes: reading them would read zeros)",
                                     groupedCount(report.sparseFilesLeftOut)))
            << '\n';
    for (std::size_t i = 0; i < report.duplicates.size() && i < top; ++i) {
        const auto& group = report.duplicates[i];
        out << "  " << ByteFormat::string(group.reclaimableBytes()) << " reclaimable: " << group.paths.size()
            << " copies of " << ByteFormat::string(group.logicalBytes)
            << style.dim("  sha256 " + group.contentHash.substr(0, 12)) << '\n';
        for (const auto& path : group.paths) out << "    " << path << '\n';
    }

    out << '\n' << style.bold("By category") << '\n';
    Table categories({Table::Align::left, Table::Align::right, Table::Align::right, Table::Align::right});
    categories.addRow({"CATEGORY", "ALLOCATED", "EXCLUSIVE", "FILES"});
    for (const auto& total : report.categoryTotals) {
        categories.addRow({std::string(rawValue(total.category)), ByteFormat::string(total.allocatedBytes),
                           ByteFormat::string(total.exclusiveBytes), groupedCount(total.fileCount)});
    }
    categories.print(out, "  ");

    out << '\n';
    out << "Hard links save " << ByteFormat::string(report.hardLinkSavedBytes) << " (each inode counted once)\n";
    out << "Clones share " << ByteFormat::string(report.cloneSharedBytes)
        << " (allocated once, listed in several files)\n";
    out << "Unreadable folders: " << groupedCount(report.deniedDirectories);
    if (report.unreadableFiles > 0) out << ", unreadable files: " << groupedCount(report.unreadableFiles);
    if (report.skippedMountPoints > 0)
        out << ", other volumes not entered: " << groupedCount(report.skippedMountPoints);
    out << '\n';
    if (!report.credentialsInTrash.empty()) {
        out << style.yellow(fmt::format("{} credential-like files are in the Trash:", report.credentialsInTrash.size()))
            << '\n';
        for (const auto& path : report.credentialsInTrash) out << "  " << path << '\n';
    }
}

void runScan(CliContext& context, const ScanCommandOptions& options) {
    const std::string root = options.path.empty() ? context.machine().home() : options.path;
    std::error_code error;
    if (!std::filesystem::exists(root, error)) throw UsageError("cannot scan " + root + ": no such file or folder");
    if (!std::filesystem::is_directory(root, error)) throw UsageError("cannot scan " + root + ": not a folder");

    SpaceScanOptions scanOptions;
    scanOptions.oneFileSystem = options.oneFileSystem;
    scanOptions.excludes = options.excludes;
    scanOptions.threads = options.threads;
    scanOptions.findDuplicates = options.duplicates;
    scanOptions.largestFileCount = std::max<std::size_t>(static_cast<std::size_t>(options.top), 20);
    scanOptions.keptFilesPerFolder = std::max<std::size_t>(static_cast<std::size_t>(options.top), 16);

    ScanProgress progress;
    const auto started = std::chrono::steady_clock::now();
    ScanTree tree;
    bool interrupted = false;
    try {
        auto outcome = runLongWork(
            context,
            [&](const CancelCheck& isCancelled) {
                return SpaceScanner::scan(root, scanOptions, progress, isCancelled);
            },
            [&] {
                return progressLine(progress.snapshot(),
                                    std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
            });
        tree = std::move(outcome.result);
        interrupted = outcome.interrupted;
    } catch (const SpaceScanError& failure) {
        throw CommandFailure(failure.what());
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    if (!options.exportFile.empty()) {
        try {
            AtomicFile::write(options.exportFile, NcduExport::write(tree, VELMORA_VERSION, context.machine().now()));
        } catch (const std::exception& failure) {
            throw CommandFailure(std::string("could not write the export: ") + failure.what());
        }
    }

    const SpaceCatalog catalog = context.machine().catalog();
    const SpaceScanReport report = ScanReporting::report(tree, catalog);
    SpaceTreeOptions treeOptions;
    treeOptions.maxDepth = options.depth;
    treeOptions.maxChildren = static_cast<std::size_t>(options.top);
    SpaceTreeBuilder builder;
    if (context.json()) {
        SpaceJsonWriter writer(context.out());
        SpaceScanFanOut both({&writer, &builder});
        ScanReporting::emit(tree, catalog, treeOptions, report, both);
    } else {
        ScanReporting::emit(tree, catalog, treeOptions, report, builder);
        printHuman(context, builder.root(), report, static_cast<std::size_t>(options.top), seconds, options.duplicates);
    }

    try {
        SpaceSummary::fromScan(builder.root(), report, context.machine().now()).save(context.machine().dataFolder());
    } catch (const std::exception& failure) {
        context.err() << "velmora: could not save the space summary: " << failure.what() << '\n';
    }
    if (interrupted || report.wasCancelled) throw CommandFailure("scan interrupted; the figures above are partial");
}

}  // namespace

void registerScanCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<ScanCommandOptions>();
    auto* scan = app.add_subcommand("scan", "Measure where the space under a folder goes (default: the home folder)");
    scan->add_option("path", options->path, "The folder to scan")->type_name("PATH");
    scan->add_option("--depth", options->depth, "Levels of the folder tree to show (default 2)")
        ->check(CLI::Range(0, 64));
    scan->add_option("--top", options->top,
                     "Children per folder, largest files and duplicate groups to show (default 10)")
        ->check(CLI::Range(1, 1000));
    scan->add_flag("--one-file-system,!--all-file-systems", options->oneFileSystem,
                   "Stay on the folder's volume (default); --all-file-systems enters other mounted volumes");
    scan->add_option("--exclude", options->excludes,
                     "Leave out items whose name (or, with a '/', whose path) matches GLOB; repeatable")
        ->type_name("GLOB")
        ->allow_extra_args(false);
    scan->add_flag("!--no-duplicates", options->duplicates,
                   "Skip the duplicate search (it reads files of 1 MB and more)");
    scan->add_option("--threads", options->threads, "Walker threads (default: eight per core, 16 to 32)")
        ->check(CLI::Range(1, 256));
    scan->add_option("--export", options->exportFile,
                     "Also write the scan in the JSON export format disk-usage browsers open (ncdu -f FILE)")
        ->type_name("FILE")
        ->expected(1);
    scan->callback([&context, options] { runScan(context, *options); });
}

}  // namespace corvel::cli
