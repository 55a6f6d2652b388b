// velmora migrate plan|verify: a plan to move a workspace to another volume, for review, and a
// comparison of a copied tree with its original by content. Velmora moves, copies and deletes
// nothing here; the commands a plan shows are for a person to run.
#include "CliErrors.h"
#include "Commands.h"
#include "LongWork.h"
#include "common/ByteFormat.h"
#include "common/PathText.h"
#include "common/Text.h"
#include "machine/MigrationReading.h"
#include "migration/MigrationPlanner.h"
#include "migration/TreeVerifier.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>

namespace corvel::cli {
namespace {

struct PlanOptions {
    std::string source;
    std::string target;
};

struct VerifyOptions {
    std::string source;
    std::string copy;
    unsigned workers = 0;
};

// The typed path made absolute and normal; a path that is not an existing folder is bad usage.
std::string existingFolder(const std::string& typed, const char* role) {
    const auto path = normalPath(typed, std::filesystem::current_path().string());
    std::error_code error;
    if (!std::filesystem::is_directory(path, error))
        throw UsageError(fmt::format("{} is not an existing folder: {}", role, terminalSafe(typed)));
    return path;
}

std::string counted(std::size_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string progressText(const MigrationProgress::Snapshot& now) {
    auto text = fmt::format("{}: {} files, {}", now.phase, groupedCount(now.files), ByteFormat::string(now.bytes));
    if (now.totalBytes > 0) text += " of " + ByteFormat::string(now.totalBytes * 2);
    return text;
}

void printList(CliContext& context, const std::string& title, const std::vector<std::string>& lines, bool numbered) {
    if (lines.empty()) return;
    context.out() << '\n' << context.style().bold(title) << '\n';
    for (std::size_t i = 0; i < lines.size(); ++i)
        context.out() << "  " << (numbered ? fmt::format("{}. ", i + 1) : "") << terminalSafe(lines[i]) << '\n';
}

void printPlan(CliContext& context, const MigrationPlan& plan) {
    auto& out = context.out();
    const auto& style = context.style();
    out << style.bold("Migration PLAN") << ": for review only; velmora moves, copies and deletes nothing.\n";
    Table facts({Table::Align::left, Table::Align::left});
    facts.addRow(
        {"Workspace", terminalSafe(plan.source) + "  (" + ByteFormat::string(plan.allocatedBytes) + " allocated)"});
    auto destination = terminalSafe(plan.destination);
    if (plan.targetVolume)
        destination += "  on " + terminalSafe(*plan.targetVolume) + ", " +
                       ByteFormat::string(plan.targetAvailableBytes.value_or(0)) + " free";
    facts.addRow({"Destination", destination});
    facts.print(out, "  ");

    out << '\n' << style.bold(fmt::format("Blockers ({})", plan.blockers.size())) << '\n';
    if (plan.blockers.empty()) out << "  none\n";
    for (const auto& blocker : plan.blockers)
        out << "  " << style.tone(toneOf(blocker.kind), std::string(label(blocker.kind))) << "  "
            << terminalSafe(blocker.message) << '\n';

    out << '\n' << style.bold(fmt::format("Would break after the move ({})", plan.breakingPaths.size())) << '\n';
    if (plan.breakingPaths.empty()) out << "  nothing found that names the old path\n";
    for (const auto& broken : plan.breakingPaths) {
        const auto where = broken.lineNumber ? fmt::format("{}:{}", terminalSafe(broken.path), *broken.lineNumber)
                                             : terminalSafe(broken.path) + " -> " + terminalSafe(broken.line);
        out << "  " << style.tone(toneOf(broken.kind), std::string(label(broken.kind))) << "  " << where << '\n';
        if (broken.lineNumber) {
            auto line = terminalSafe(broken.line);
            if (broken.matchingLines > 1) line += fmt::format("  (and {} more lines)", broken.matchingLines - 1);
            out << "      " << style.dim(line) << '\n';
        }
        out << "      fix: " << broken.fix << '\n';
    }
    printList(context, "Steps", plan.steps, true);
    printList(context, "Commands for review (velmora runs none of them)", plan.commands, false);
    printList(context, "Rollback", plan.rollback, false);
    printList(context, "Notes", plan.notes, false);
    out << '\n'
        << (plan.isReady
                ? style.green("Ready for review") + ": no blockers."
                : style.red("Blocked") + ": " + counted(plan.blockers.size(), "blocker") + " to resolve first.")
        << '\n';
}

void runPlan(CliContext& context, const PlanOptions& options) {
    const auto source = existingFolder(options.source, "the workspace");
    const auto target = existingFolder(options.target, "the target");
    // Overlapping paths are bad usage: nothing is worth measuring before the person fixes them.
    if (const auto problem = MigrationPlanner::overlapProblem(source, target)) throw UsageError(terminalSafe(*problem));
    auto& machine = context.machine();
    MigrationProgress progress;
    auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) { return migrationFacts(machine, source, target, progress, isCancelled); },
        [&] { return progressText(progress.snapshot()); });
    if (outcome.interrupted) throw CommandFailure("interrupted: no plan was made");
    const auto plan = MigrationPlanner::plan(outcome.result);
    if (context.json()) {
        context.printJson(plan);
        return;
    }
    context.printSource();
    printPlan(context, plan);
}

void printComparison(CliContext& context, const TreeComparison& result, double seconds) {
    auto& out = context.out();
    const auto& style = context.style();
    out << style.bold("Verifying") << " " << terminalSafe(result.copy) << " against " << terminalSafe(result.source)
        << " by content (SHA-256).\n";
    if (!result.differences.empty()) {
        out << '\n' << style.bold(fmt::format("Differences ({})", result.differences.size())) << '\n';
        Table table({Table::Align::left, Table::Align::left, Table::Align::left});
        for (const auto& difference : result.differences)
            table.addRow({style.tone(toneOf(difference.kind), std::string(label(difference.kind))),
                          terminalSafe(difference.path.empty() ? "." : difference.path),
                          terminalSafe(difference.detail)});
        table.print(out, "  ");
    }
    printList(context, fmt::format("Skipped, never opened ({})", result.skipped.size()), result.skipped, false);
    const auto rate = seconds > 0 ? static_cast<std::int64_t>(static_cast<double>(result.bytesHashed) / seconds) : 0;
    out << '\n'
        << fmt::format("Compared {} entries; {} files hashed on both sides, {} read in {:.1f} s ({}/s).",
                       groupedCount(result.entriesCompared), groupedCount(result.filesHashed),
                       ByteFormat::string(result.bytesHashed), seconds, ByteFormat::string(rate))
        << '\n';
    if (result.wasCancelled)
        out << style.yellow("INTERRUPTED") << ": the comparison is partial.\n";
    else if (result.isIdentical)
        out << style.green("IDENTICAL") << ": the copy matches the source.\n";
    else
        out << style.red("DIFFERENT") << ": " << counted(result.differences.size(), "difference") << ".\n";
}

void runVerify(CliContext& context, const VerifyOptions& options) {
    const auto source = existingFolder(options.source, "the source");
    const auto copy = existingFolder(options.copy, "the copy");
    if (source == copy) throw UsageError("the source and the copy are the same folder: " + terminalSafe(source));
    MigrationProgress progress;
    auto outcome = runLongWork(
        context,
        [&](const CancelCheck& isCancelled) {
            return TreeVerifier::compare(source, copy, {options.workers}, progress, isCancelled);
        },
        [&] { return progressText(progress.snapshot()); });
    const auto& result = outcome.result;
    if (context.json())
        context.printJson(result);
    else
        printComparison(context, result, outcome.seconds);
    if (result.wasCancelled || outcome.interrupted) throw CommandFailure("interrupted: the comparison is partial");
    if (!result.isIdentical)
        throw CommandFailure("the copy differs from the source (" + counted(result.differences.size(), "difference") +
                             ")");
}

}  // namespace

void registerMigrationCommands(CLI::App& app, CliContext& context) {
    auto* migrate =
        app.add_subcommand("migrate", "Plan moving a workspace to another volume and verify copies; moves nothing");
    migrate->require_subcommand(1);

    auto planOptions = std::make_shared<PlanOptions>();
    auto* plan = migrate->add_subcommand("plan", "Print a plan for review to move SOURCE into a volume or folder");
    plan->add_option("source", planOptions->source, "The workspace or project folder")->type_name("SOURCE")->required();
    plan->add_option("--to", planOptions->target, "The volume or folder it would go into")
        ->type_name("VOLUME_OR_FOLDER")
        ->required()
        ->expected(1)
        ->allow_extra_args(false);
    plan->callback([&context, planOptions] { runPlan(context, *planOptions); });

    auto verifyOptions = std::make_shared<VerifyOptions>();
    auto* verify = migrate->add_subcommand("verify", "Compare COPY with SOURCE by content; exit 0 only when identical");
    verify->add_option("source", verifyOptions->source, "The original tree")->type_name("SOURCE")->required();
    verify->add_option("copy", verifyOptions->copy, "The copied tree")->type_name("COPY")->required();
    verify->add_option("--workers", verifyOptions->workers, "Files hashed at once (default: one per core)")
        ->type_name("N")
        ->check(CLI::Range(1, 256))
        ->expected(1)
        ->allow_extra_args(false);
    verify->callback([&context, verifyOptions] { runVerify(context, *verifyOptions); });
}

}  // namespace corvel::cli
