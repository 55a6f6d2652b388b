// `velmora uninstall`: everything Velmora keeps for you, with sizes, and its removal after
// confirmation. Nothing outside that list is ever touched.
#include "UninstallCommands.h"

#include "CliErrors.h"
#include "Commands.h"
#include "common/AtomicFile.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "uninstall/LegacyDataMigration.h"
#include "uninstall/UninstallPlanner.h"

#include <memory>

namespace corvel::cli {
namespace {

struct UninstallOptions {
    bool dryRun = false;
    bool yes = false;
};

std::string sizeText(const UninstallItem& item) {
    std::string text = ByteFormat::string(item.bytes);
    if (item.isDirectory) text += " in " + groupedCount(item.fileCount) + (item.fileCount == 1 ? " file" : " files");
    return text;
}

void printPlan(CliContext& context, const UninstallPlan& plan) {
    const auto& style = context.style();
    auto& out = context.out();
    out << style.bold("Velmora keeps") << '\n';
    Table table({Table::Align::left, Table::Align::right, Table::Align::left});
    table.addRow({"KIND", "SIZE", "PATH"});
    for (const auto& item : plan.items) {
        std::string path = terminalSafe(item.path) + (item.isDirectory ? "/" : "");
        if (item.unreadableFolders > 0)
            path += style.tone(Tone::caution, " (" + groupedCount(item.unreadableFolders) + " unreadable folders)");
        table.addRow({std::string(label(item.kind)), sizeText(item), path});
    }
    table.print(out, "  ");
    out << "  " << groupedCount(static_cast<std::int64_t>(plan.items.size()))
        << (plan.items.size() == 1 ? " item, " : " items, ") << ByteFormat::string(plan.totalBytes) << '\n';
    if (!plan.foreignFiles.empty()) {
        out << style.dim("Left alone (not made by Velmora):") << '\n';
        for (const auto& path : plan.foreignFiles) out << style.dim("  " + terminalSafe(path)) << '\n';
    }
    for (const auto& problem : plan.problems) out << style.tone(Tone::caution, "! " + terminalSafe(problem)) << '\n';
}

void printResult(CliContext& context, const UninstallResult& result) {
    auto& out = context.out();
    out << "Removed " << groupedCount(static_cast<std::int64_t>(result.removed.size()))
        << (result.removed.size() == 1 ? " item (" : " items (") << ByteFormat::string(result.removedBytes) << ").\n";
    if (!result.left.empty()) {
        out << context.style().tone(Tone::bad, "Could not remove:") << '\n';
        for (const auto& left : result.left) out << "  " << terminalSafe(left.path) << ": " << left.reason << '\n';
    }
    out << context.style().dim(
               "The velmora program itself stays; remove it with the package manager that installed it.")
        << '\n';
}

}  // namespace

void migrateLegacyData(CliContext& context) {
    auto& machine = context.machine();
    const auto locations = VelmoraLocations::forThisUser(machine.environment(), machine.dataFolder());
    try {
        const auto record = LegacyDataMigration::atStart(locations, currentTime());
        if (!record) return;
        context.err() << "velmora: moved " << record->moved.size() << (record->moved.size() == 1 ? " item" : " items")
                      << " kept by an earlier version from " << terminalSafe(join(record->sources, ", ")) << " into "
                      << terminalSafe(locations.dataFolder.string());
        if (!record->kept.empty())
            context.err() << " (" << record->kept.size() << " left where they were: a newer copy exists)";
        if (!record->failed.empty()) context.err() << " (" << record->failed.size() << " could not be moved)";
        context.err() << '\n';
    } catch (const FileError& error) {
        context.err() << "velmora: warning: earlier data was not fully moved: " << error.what() << '\n';
    }
}

void registerUninstallCommands(CLI::App& app, CliContext& context) {
    auto* uninstall =
        app.add_subcommand("uninstall", "Remove everything Velmora keeps: data, settings, agent registration, caches");
    auto options = std::make_shared<UninstallOptions>();
    uninstall->add_flag("--dry-run", options->dryRun, "Only list what would be removed");
    uninstall->add_flag("--yes", options->yes, "Remove without asking first");
    uninstall->callback([&context, options] {
        auto& machine = context.machine();
        const auto plan =
            UninstallPlanner::plan(VelmoraLocations::forThisUser(machine.environment(), machine.dataFolder()));
        if (plan.items.empty()) {
            if (context.json())
                context.printJson(Json{{"plan", plan}, {"dryRun", options->dryRun}});
            else
                context.out() << "Velmora keeps nothing for you on this machine.\n";
            return;
        }
        if (!context.json()) printPlan(context, plan);
        if (options->dryRun) {
            if (context.json())
                context.printJson(Json{{"plan", plan}, {"dryRun", true}});
            else
                context.out() << "Dry run: nothing was removed.\n";
            return;
        }
        const std::string question = "Remove these " + std::to_string(plan.items.size()) + " items (" +
                                     ByteFormat::string(plan.totalBytes) + ")? [y/N]";
        if (!context.confirm(question, options->yes)) {
            context.out() << "Nothing was removed.\n";
            return;
        }
        const auto result = UninstallPlanner::execute(plan);
        if (context.json())
            context.printJson(Json{{"plan", plan}, {"dryRun", false}, {"result", result}});
        else
            printResult(context, result);
        if (!result.left.empty())
            throw CommandFailure(std::to_string(result.left.size()) +
                                 " of Velmora's files could not be removed (listed above)");
    });
}

}  // namespace corvel::cli
