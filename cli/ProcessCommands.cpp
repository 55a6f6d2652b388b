// `velmora processes`: the running apps and processes grouped, busiest first, and the three
// actions on a group (quit, force quit, relaunch), each decided by the action policy, confirmed by
// the person and recorded. Only this machine has live processes; a recording has none.
#include "CliErrors.h"
#include "Commands.h"
#include "ConsentCommands.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "machine/MachineProcesses.h"
#include "processes/ProcessActionLog.h"
#include "processes/ProcessSampler.h"

#include <fmt/format.h>

#include <memory>
#include <set>

namespace corvel::cli {
namespace {

struct ListOptions {
    std::string sort = "cpu";
    int top = 20;
    int intervalMilliseconds = static_cast<int>(ProcessSampler::defaultInterval.count());
    bool user = false;
    bool all = false;
};

struct ActionOptions {
    std::string group;
    bool yes = false;
};

void requireLive(CliContext& context) {
    if (!MachineProcesses::isAvailable(context.machine())) throw UsageError(MachineProcesses::replayText());
}

std::string cpuText(double percent) {
    return fmt::format("{:.1f}%", percent);
}

std::string pidText(const std::vector<std::int32_t>& pids) {
    std::vector<std::string> words;
    for (const auto pid : pids) words.push_back(std::to_string(pid));
    return join(words, ", ");
}

std::string processCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " process" : " processes");
}

void printGroups(CliContext& context, const std::vector<ProcessGroup>& shown, std::size_t total,
                 const ListOptions& options) {
    const auto& style = context.style();
    const auto oneKind = ProcessGrouping::sharedMemoryKind(shown);
    const std::string scope = options.all ? "Processes of every user" : "Your processes";
    context.out() << style.bold(scope)
                  << style.dim(" · CPU over " + fmt::format("{:g}", options.intervalMilliseconds / 1000.0) +
                               " s, sorted by " + options.sort)
                  << '\n';
    if (shown.empty()) {
        context.out() << "  No processes found.\n";
        return;
    }
    using A = Table::Align;
    Table table({A::left, A::left, A::right, A::right, A::right, A::left});
    table.addRow({style.dim("NAME"), style.dim("KIND"), style.dim("PROCESSES"), style.dim("CPU"),
                  style.dim(oneKind ? "MEMORY (" + std::string(label(*oneKind)) + ")" : "MEMORY"), style.dim("ID")});
    for (const auto& group : shown) {
        std::string memory = ByteFormat::string(group.memoryBytes);
        if (!oneKind) memory += style.dim(" " + std::string(label(group.memoryKind)));
        table.addRow({terminalSafe(group.name), style.tone(toneOf(group.kind), std::string(label(group.kind))),
                      std::to_string(group.pids.size()), cpuText(group.cpuPercent), memory,
                      style.dim(terminalSafe(group.id))});
    }
    table.print(context.out(), "  ");
    if (shown.size() < total)
        context.out() << style.dim("  " + std::to_string(shown.size()) + " of " + std::to_string(total) +
                                   " groups shown (--top N; --top 0 shows all)")
                      << '\n';
    std::set<MemoryKind> kinds;
    for (const auto& group : shown) kinds.insert(group.memoryKind);
    for (const auto kind : kinds) context.out() << style.dim("  " + std::string(meaning(kind))) << '\n';
}

void listProcesses(CliContext& context, const ListOptions& options) {
    requireLive(context);
    const auto sort = enumFromRaw<ProcessSort>(options.sort);
    const auto reading =
        MachineProcesses::read(context.machine(), std::chrono::milliseconds(options.intervalMilliseconds));
    std::vector<ProcessGroup> groups;
    for (const auto& group : reading.groups)
        if (options.all || group.isCurrentUser) groups.push_back(group);
    groups = ProcessGrouping::sorted(std::move(groups), sort.value_or(ProcessSort::cpu));
    const auto total = groups.size();
    if (options.top > 0 && groups.size() > static_cast<std::size_t>(options.top))
        groups.resize(static_cast<std::size_t>(options.top));
    if (context.json()) {
        context.printJson(Json{{"intervalMilliseconds", options.intervalMilliseconds},
                               {"sort", options.sort},
                               {"scope", options.all ? "all" : "user"},
                               {"totalGroups", total},
                               {"groups", groups}});
        return;
    }
    printGroups(context, groups, total, options);
}

// The one group `text` names, or a usage error that says which it could have been.
ProcessGroup chooseGroup(CliContext& context, const std::vector<ProcessGroup>& groups, const std::string& text) {
    const auto matches = ProcessGrouping::find(groups, text);
    if (matches.empty())
        throw UsageError("no running process group '" + terminalSafe(text) +
                         "' (see 'velmora processes --all' for names and ids)");
    if (matches.size() > 1) {
        Table table;
        for (const auto& group : matches)
            table.addRow({terminalSafe(group.id), terminalSafe(group.name), std::string(label(group.kind)),
                          "uid " + std::to_string(group.uid), processCount(group.pids.size())});
        context.err() << "'" << terminalSafe(text) << "' names " << matches.size() << " process groups:\n";
        table.print(context.err(), "  ");
        throw UsageError("name one of them by its id");
    }
    return matches.front();
}

Json actionDocument(ProcessAction action, const ProcessGroup& group, const ProcessActionPolicy::Decision& decision) {
    return Json{{"action", action}, {"group", group}, {"decision", decision}};
}

void runAction(CliContext& context, ProcessAction action, const ActionOptions& options) {
    requireLive(context);
    requireConsent(context, ConsentScope::processControl);
    auto& machine = context.machine();
    // No CPU figures are needed to act: one reading, no interval.
    const auto reading = MachineProcesses::read(machine, std::chrono::milliseconds(0));
    const auto group = chooseGroup(context, reading.groups, options.group);
    const auto name = terminalSafe(group.name);
    const auto decision = ProcessActionPolicy::decide(action, group, MachineProcesses::ownPID());
    if (!decision.allowed) {
        if (context.json()) context.printJson(actionDocument(action, group, decision));
        throw CommandFailure(std::string(title(action)) + " '" + name + "' is not allowed: " + *decision.reason);
    }
    const auto question = std::string(title(action)) + " " + name + " (" + processCount(group.pids.size()) + ": " +
                          pidText(group.pids) + ")? [y/N]";
    if (!context.confirm(question, options.yes)) throw CommandFailure("cancelled: nothing was done");

    const auto result = MachineProcesses::perform(machine, action, group, reading);
    if (result.logProblem)
        context.err() << "velmora: warning: the action was not recorded: " << *result.logProblem << '\n';
    const auto& outcome = result.record ? result.record->outcome : std::string();
    const bool succeeded =
        result.status == ProcessActionResult::Status::done || result.status == ProcessActionResult::Status::alreadyGone;
    if (context.json()) {
        auto document = actionDocument(action, group, result.decision);
        document["result"] = result;
        context.printJson(document);
    } else if (succeeded) {
        context.out() << context.style().tone(toneOf(result.status), name + ": " + outcome) << '\n';
    }
    if (!succeeded) throw CommandFailure(name + ": " + outcome);
}

void showLog(CliContext& context) {
    ProcessActionLog log(context.machine().dataFolder());
    const auto records = log.all();
    if (const auto problem = log.loadProblem()) context.err() << "velmora: warning: " << *problem << '\n';
    if (context.json()) {
        context.printJson(
            Json{{"file", log.file().string()}, {"limit", ProcessActionLog::limit}, {"records", records}});
        return;
    }
    const auto& style = context.style();
    context.out() << style.bold("Process actions") << ' '
                  << style.dim(terminalSafe(log.file().string()) + " (the newest " +
                               std::to_string(ProcessActionLog::limit) + " are kept)")
                  << '\n';
    if (records.empty()) {
        context.out() << "  No process actions recorded yet.\n";
        return;
    }
    Table table;
    table.addRow({style.dim("DATE"), style.dim("ACTION"), style.dim("NAME"), style.dim("PIDS"), style.dim("OUTCOME")});
    for (const auto& record : records)
        table.addRow({ISO8601::format(record.date), std::string(title(record.action)), terminalSafe(record.name),
                      pidText(record.pids), terminalSafe(record.outcome)});
    table.print(context.out(), "  ");
}

void addAction(CLI::App& processes, CliContext& context, ProcessAction action, const std::string& command,
               const std::string& description) {
    auto options = std::make_shared<ActionOptions>();
    auto* sub = processes.add_subcommand(command, description);
    sub->add_option("group", options->group, "The group's name, id (from 'velmora processes') or one of its pids")
        ->required()
        ->type_name("GROUP");
    sub->add_flag("--yes", options->yes, "Confirm in advance instead of being asked");
    sub->callback([&context, action, options] { runAction(context, action, *options); });
}

}  // namespace

void registerProcessCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<ListOptions>();
    auto* processes = app.add_subcommand("processes",
                                         "Show running apps and processes by CPU or memory; quit, "
                                         "force quit or relaunch one");
    processes->add_option("--sort", options->sort, "cpu (default) or memory")
        ->check(CLI::IsMember({"cpu", "memory"}))
        ->type_name("KEY");
    processes->add_option("--top", options->top, "Groups to show (default 20; 0 shows all)")
        ->check(CLI::Range(0, 100000));
    processes
        ->add_option("--interval", options->intervalMilliseconds,
                     "Milliseconds over which CPU use is measured (default 500)")
        ->check(CLI::Range(0, 60000))
        ->type_name("MS");
    auto* user = processes->add_flag("--user", options->user, "Only your processes (default)");
    auto* all = processes->add_flag("--all", options->all, "Every user's processes, the system's included");
    user->excludes(all);

    addAction(*processes, context, ProcessAction::quit, "quit", "Ask a group's processes to quit, and wait up to 10 s");
    addAction(*processes, context, ProcessAction::forceQuit, "force-quit", "End a group's processes without asking");
    addAction(*processes, context, ProcessAction::relaunch, "relaunch", "Quit an app and start it again");
    auto* log = processes->add_subcommand("log", "List the process actions taken");
    log->callback([&context] { showLog(context); });

    processes->callback([&context, processes, options] {
        if (!processes->get_subcommands().empty()) return;
        listProcesses(context, *options);
    });
}

}  // namespace corvel::cli
