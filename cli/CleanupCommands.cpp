// velmora cleanup simulate|suggest|history|show: what a cleanup would free, worked out without
// touching a file. Every simulation is saved in the cleanup history; nothing is ever deleted, and
// the closing line only shows the command a person could run after reviewing the plan.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"
#include "cleanup/CleanupHistory.h"
#include "cleanup/ManualCleanup.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "machine/CleanupReading.h"
#include "space/ScanReporting.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace corvel::cli {
namespace {

struct SimulateOptions {
    std::vector<std::string> paths;
};

struct SuggestOptions {
    std::string path;
    std::string olderThan = "30d";
    std::size_t top = 20;
};

struct HistoryOptions {
    std::size_t limit = 20;
    std::string id;
};

std::string dateText(TimePoint time) {
    const auto text = ISO8601::format(std::chrono::floor<std::chrono::seconds>(time));
    return text.substr(0, 10) + " " + text.substr(11, 5) + " UTC";
}

std::string progressLine(const ScanProgress::Snapshot& now) {
    std::string line =
        fmt::format("Measuring: {} files, {}", groupedCount(now.files), ByteFormat::string(now.allocatedBytes));
    if (!now.currentFolder.empty()) line += "  " + ScanReporting::displayText(now.currentFolder);
    return line;
}

// Runs the simulation on its own thread with a progress line and Ctrl-C; an interrupted run
// simulates nothing, so there is nothing partial to save.
template <class Work>
CleanupRunResult runWithProgress(CliContext& context, ScanProgress& progress, Work work) {
    try {
        auto outcome = runLongWork(context, work, [&] { return progressLine(progress.snapshot()); });
        if (outcome.interrupted || outcome.result.wasCancelled)
            throw CommandFailure("interrupted: nothing was simulated or saved");
        return std::move(outcome.result);
    } catch (const CleanupRunError& failure) {
        throw CommandFailure(failure.what());
    }
}

// Saves the simulation; a history that cannot be read or written is one line for stderr, and
// the simulation is shown all the same.
struct Saving {
    bool saved = false;
    std::optional<std::string> problem;
};

Saving save(CliContext& context, const CleanupSimulation& simulation) {
    auto history = CleanupHistory::open(context.machine().dataFolder());
    const auto unreadable = history.loadProblem();
    try {
        history.append(simulation);
    } catch (const FileError& failure) {
        return {false, std::string("could not save the simulation in the cleanup history: ") + failure.what()};
    }
    return {true, unreadable};
}

void reportSaving(CliContext& context, const Saving& saving) {
    if (saving.problem) context.err() << "velmora: " << terminalSafe(*saving.problem) << '\n';
}

void printHeader(CliContext& context, const CleanupSimulation& simulation) {
    const auto& style = context.style();
    context.out() << style.bold("Cleanup SIMULATION") << ": nothing was deleted, moved or changed. Volume "
                  << terminalSafe(simulation.volumeName) << ", " << ByteFormat::string(simulation.volumeFreeBefore)
                  << " free.\n";
}

void printProblems(CliContext& context, const CleanupRunResult& run) {
    const auto& style = context.style();
    for (const auto& problem : run.problems)
        context.out() << "  " << style.yellow("not simulated") << "  " << terminalSafe(problem.path) << ": "
                      << terminalSafe(problem.reason) << '\n';
    for (const auto& warning : run.warnings)
        context.out() << "  " << style.yellow("note") << "  " << terminalSafe(warning.path) << ": "
                      << terminalSafe(warning.reason) << '\n';
}

std::string lastChange(const CleanupCandidate& candidate) {
    return candidate.lastModified ? dateText(*candidate.lastModified).substr(0, 10) : "unknown";
}

void printBody(CliContext& context, const CleanupSimulation& simulation) {
    auto& out = context.out();
    const auto& style = context.style();

    out << '\n' << style.bold(fmt::format("Eligible ({})", simulation.eligible.size())) << '\n';
    if (simulation.eligible.empty()) out << "  none\n";
    Table eligible({Table::Align::right, Table::Align::right, Table::Align::right});
    if (!simulation.eligible.empty())
        eligible.addRow({"EXCLUSIVE", "ALLOCATED", "FILES", "RISK", "CATEGORY", "CHANGED", "PATH"});
    for (const auto& candidate : simulation.eligible) {
        const auto& classification = candidate.classification;
        eligible.addRow(
            {ByteFormat::string(candidate.exclusiveBytes), ByteFormat::string(candidate.allocatedBytes),
             groupedCount(candidate.fileCount), style.tone(toneOf(classification.risk), label(classification.risk)),
             std::string(rawValue(classification.category)), lastChange(candidate), terminalSafe(candidate.path)});
    }
    eligible.print(out, "  ");
    for (const auto& candidate : simulation.eligible)
        if (candidate.classification.hint)
            out << "  "
                << style.dim("the owner's own way for " + terminalSafe(candidate.name) + ": " +
                             terminalSafe(*candidate.classification.hint))
                << '\n';

    out << '\n' << style.bold(fmt::format("Excluded by safety rules ({})", simulation.excluded.size())) << '\n';
    if (simulation.excluded.empty()) out << "  none\n";
    std::size_t sizeWidth = 0;
    for (const auto& exclusion : simulation.excluded)
        sizeWidth = std::max(sizeWidth, ByteFormat::string(exclusion.candidate.exclusiveBytes).size());
    for (const auto& exclusion : simulation.excluded) {
        const auto size = ByteFormat::string(exclusion.candidate.exclusiveBytes);
        out << "  " << std::string(sizeWidth - size.size(), ' ') << size << "  "
            << terminalSafe(exclusion.candidate.path) << '\n'
            << "  " << std::string(sizeWidth, ' ') << "  " << style.red(terminalSafe(exclusion.reason)) << '\n';
    }

    out << '\n' << style.bold("Checks") << '\n';
    for (const auto& check : simulation.checks) out << "  " << check << '\n';

    out << '\n'
        << "Recoverable: at least " << style.bold(ByteFormat::string(simulation.estimatedRecoverableMinimum()))
        << " (exclusive), at most " << ByteFormat::string(simulation.estimatedRecoverableMaximum())
        << " (allocated). Free space after: " << ByteFormat::string(simulation.projectedFreeAfter()) << " (now "
        << ByteFormat::string(simulation.volumeFreeBefore) << ").\n";
}

void printClosing(CliContext& context, const CleanupSimulation& simulation, const Saving* saving) {
    auto& out = context.out();
    if (saving && saving->saved)
        out << context.style().dim("Saved as simulation " + simulation.id + " (velmora cleanup show " +
                                   simulation.id.substr(0, 8) + ")")
            << '\n';
    if (const auto command = ManualCleanup::removalCommand(simulation)) {
        out << "For your review only (velmora runs none of it): " << terminalSafe(*command) << '\n';
    } else {
        out << "Nothing is eligible, so there is no command to review.\n";
    }
}

std::vector<std::string> projectRoots(CliContext& context) {
    const auto loaded = context.machine().settings();
    if (loaded.warning) context.err() << "velmora: warning: " << terminalSafe(*loaded.warning) << '\n';
    return loaded.settings.projectRoots;
}

void runSimulate(CliContext& context, const SimulateOptions& options) {
    const auto sources = cleanupSources(context.machine(), projectRoots(context));
    ScanProgress progress;
    const auto run = runWithProgress(context, progress, [&](const CancelCheck& isCancelled) {
        return CleanupRun::simulatePaths(options.paths, sources, progress, isCancelled);
    });
    const auto saving = save(context, run.simulation);
    if (context.json()) {
        for (const auto& problem : run.problems)
            context.err() << "velmora: not simulated: " << terminalSafe(problem.path) << ": "
                          << terminalSafe(problem.reason) << '\n';
        context.printJson(run.simulation);
    } else {
        printHeader(context, run.simulation);
        printProblems(context, run);
        printBody(context, run.simulation);
        printClosing(context, run.simulation, &saving);
    }
    reportSaving(context, saving);
}

void runSuggest(CliContext& context, const SuggestOptions& options) {
    const auto age = CleanupSuggester::parseAge(options.olderThan);
    if (!age) throw UsageError("--older-than: '" + options.olderThan + "' is not an age (use e.g. 30d, 12h, 2w or 0)");
    const std::string root = normalPath(options.path.empty() ? context.machine().home() : options.path);
    std::error_code error;
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(root, error)))
        throw UsageError("cannot suggest from " + root + ": " +
                         (std::filesystem::exists(root, error) ? "not a folder" : "no such folder"));

    const auto sources = cleanupSources(context.machine(), projectRoots(context));
    ScanProgress progress;
    const auto run = runWithProgress(context, progress, [&](const CancelCheck& isCancelled) {
        return CleanupRun::suggest(root, {*age, options.top}, sources, progress, isCancelled);
    });
    // A simulation of nothing tells nothing worth keeping.
    const Saving saving = run.suggestions.empty() ? Saving{} : save(context, run.simulation);
    if (context.json()) {
        context.printJson(run.simulation);
        reportSaving(context, saving);
        return;
    }
    auto& out = context.out();
    const auto& style = context.style();
    printHeader(context, run.simulation);
    printProblems(context, run);
    out << '\n'
        << style.bold(fmt::format("Suggested from {} ({})", terminalSafe(root), run.suggestions.size())) << ": "
        << "green and yellow items untouched for at least " << options.olderThan << ", biggest first\n";
    if (run.suggestions.empty()) {
        out << "  Nothing to suggest: no green or yellow item here has been left alone that long.\n";
        return;
    }
    Table suggested({Table::Align::right});
    suggested.addRow({"EXCLUSIVE", "PATH", "WHY"});
    for (const auto& suggestion : run.suggestions)
        suggested.addRow({ByteFormat::string(suggestion.candidate.exclusiveBytes),
                          terminalSafe(suggestion.candidate.path), terminalSafe(suggestion.why)});
    suggested.print(out, "  ");
    printBody(context, run.simulation);
    printClosing(context, run.simulation, &saving);
    reportSaving(context, saving);
}

std::vector<CleanupSimulation> savedSimulations(CliContext& context) {
    auto history = CleanupHistory::open(context.machine().dataFolder());
    if (const auto problem = history.loadProblem()) context.err() << "velmora: " << terminalSafe(*problem) << '\n';
    return history.all();
}

void runHistory(CliContext& context, const HistoryOptions& options) {
    const auto simulations = CleanupHistory::newestFirst(savedSimulations(context), options.limit);
    if (context.json()) {
        context.printJson(simulations);
        return;
    }
    auto& out = context.out();
    if (simulations.empty()) {
        out << "No cleanup simulations saved yet (velmora cleanup simulate PATH… or velmora cleanup suggest).\n";
        return;
    }
    out << context.style().bold("Cleanup simulations, newest first") << '\n';
    Table table({Table::Align::left, Table::Align::left, Table::Align::left, Table::Align::right, Table::Align::right});
    table.addRow({"ID", "DATE", "VOLUME", "ELIGIBLE", "RECOVERABLE"});
    for (const auto& simulation : simulations)
        table.addRow({simulation.id.substr(0, 8), dateText(simulation.createdAt), terminalSafe(simulation.volumeName),
                      groupedCount(static_cast<std::int64_t>(simulation.eligible.size())),
                      ByteFormat::string(simulation.estimatedRecoverableMinimum())});
    table.print(out, "  ");
}

void runShow(CliContext& context, const HistoryOptions& options) {
    CleanupSimulation simulation;
    try {
        simulation = CleanupHistory::find(savedSimulations(context), options.id);
    } catch (const CleanupHistory::LookupError& error) {
        throw UsageError(error.what());
    }
    if (context.json()) {
        context.printJson(simulation);
        return;
    }
    printHeader(context, simulation);
    context.out() << "Simulated " << dateText(simulation.createdAt) << " as " << simulation.id << ".\n";
    printBody(context, simulation);
    printClosing(context, simulation, nullptr);
}

}  // namespace

void registerCleanupCommands(CLI::App& app, CliContext& context) {
    auto* cleanup = app.add_subcommand("cleanup", "Simulate what removing folders would free; nothing is ever deleted");
    cleanup->require_subcommand(1);

    auto simulateOptions = std::make_shared<SimulateOptions>();
    auto* simulate = cleanup->add_subcommand("simulate", "Measure PATHs and check them against the safety rules");
    simulate->add_option("paths", simulateOptions->paths, "Folders or files to simulate removing")
        ->type_name("PATH")
        ->required();
    simulate->callback([&context, simulateOptions] { runSimulate(context, *simulateOptions); });

    auto suggestOptions = std::make_shared<SuggestOptions>();
    auto* suggest = cleanup->add_subcommand(
        "suggest", "Propose known, regenerable, untouched items under PATH (default: home) and simulate them");
    suggest->add_option("path", suggestOptions->path, "The folder to look through")->type_name("PATH");
    suggest
        ->add_option("--older-than", suggestOptions->olderThan,
                     "Only items with nothing changed for this long: 30d (default), 12h, 2w, 0")
        ->type_name("AGE")
        ->expected(1)
        ->allow_extra_args(false);
    suggest->add_option("--top", suggestOptions->top, "At most this many items (default 20)")
        ->check(CLI::Range(1, 1000));
    suggest->callback([&context, suggestOptions] { runSuggest(context, *suggestOptions); });

    auto historyOptions = std::make_shared<HistoryOptions>();
    auto* history = cleanup->add_subcommand("history", "List saved simulations, newest first");
    history->add_option("--limit", historyOptions->limit, "Show at most N (default 20)")
        ->type_name("N")
        ->check(CLI::Range(1, 1000));
    history->callback([&context, historyOptions] { runHistory(context, *historyOptions); });

    auto* show = cleanup->add_subcommand("show", "Print a saved simulation again");
    show->add_option("id", historyOptions->id, "Its id, or the start of it (at least four characters)")
        ->type_name("ID")
        ->required();
    show->callback([&context, historyOptions] { runShow(context, *historyOptions); });
}

}  // namespace corvel::cli
