// `velmora ops`: the few disk operations Velmora may carry out (mount, unmount, eject, verify, new
// folder), each offered only where the policy allows, run only after a preflight and the person's
// confirmation, never with force, and logged whatever happens; plus the plans for formatting and
// adding a volume, which are only ever printed.
//
//   velmora ops disk4s1                      what can be done with it, and why not
//   velmora ops preflight unmount disk4s1    the checks and who holds files open
//   velmora ops run unmount disk4s1 [--yes]  asks, runs, logs
//   velmora ops mkdir /Volumes/Backup Exports
//   velmora ops plan format disk4 [--name N]
//   velmora ops plan add-volume disk5 Scratch
//   velmora ops log [--limit N]
#include "CliErrors.h"
#include "Commands.h"
#include "ConsentCommands.h"
#include "DiskOpsOutput.h"
#include "common/AtomicFile.h"
#include "common/Text.h"
#include "diskops/DiskOperationError.h"
#include "diskops/DiskOperationExecutor.h"
#include "diskops/DiskOperationPolicy.h"
#include "diskops/DiskOperationPreflight.h"
#include "diskops/OperationAttempt.h"
#include "diskops/OperationAuditLog.h"
#include "diskops/OperationPlan.h"
#include "machine/DiskOperationTargets.h"
#include "machine/MachineOpenFiles.h"
#include "processes/CurrentProcess.h"

#include <memory>

namespace corvel::cli {
namespace {

struct OpsOptions {
    std::string target;
    std::string operation;
    std::string folderName;
    std::string planName = "Untitled";
    std::string volumeName;
    bool yes = false;
    int limit = 20;
};

// The running program plays the part of the application bundle: unmounting the volume it runs
// from would pull the ground from under it.
std::string appBundlePath() {
    return currentExecutablePath().value_or("");
}

DiskOperation operationNamed(const std::string& text) {
    if (const auto operation = enumFromRaw<DiskOperation>(text)) return *operation;
    std::vector<std::string> names;
    for (const auto operation : allCases<DiskOperation>()) names.emplace_back(rawValue(operation));
    throw UsageError("unknown operation '" + text + "' (one of " + join(names, ", ") + ")");
}

DiskOperationTarget targetNamed(CliContext& context, const std::string& text) {
    if (text.empty())
        throw UsageError(
            "ops needs a TARGET: a disk identifier such as disk4s1, a device such as sdb1, "
            "or a mount path");
    auto& machine = context.machine();
    const auto sources = DiskOperationTargets::gather(machine, machine.snapshot());
    auto target = DiskOperationTargets::resolve(sources, text);
    if (!target)
        throw UsageError("unknown target '" + terminalSafe(text) +
                         "' (a disk identifier such as disk4s1, a device such as sdb1, or a mount path)");
    return std::move(*target);
}

PreflightReport runPreflight(CliContext& context, DiskOperation operation, const DiskOperationTarget& target) {
    auto& machine = context.machine();
    const auto lister = MachineOpenFiles::lister(machine);
    const DiskOperationPreflight preflight(machine.runner(ToolTimeout::inspection), *lister, appBundlePath(),
                                           machine.platform());
    return preflight.run(operation, target.object, target.volumesOnDisk, machine.now());
}

void listOperations(CliContext& context, const OpsOptions& options) {
    const auto target = targetNamed(context, options.target);
    const auto availability = DiskOperationPolicy::all(target.object, appBundlePath(), context.machine().platform());
    if (context.json()) {
        context.printJson(Json{{"target", target.object}, {"availability", availability}});
        return;
    }
    context.printSource();
    printTarget(context, target.object);
    printAvailability(context, availability);
}

void preflightCommand(CliContext& context, const OpsOptions& options) {
    const auto operation = operationNamed(options.operation);
    const auto target = targetNamed(context, options.target);
    const auto report = runPreflight(context, operation, target);
    if (context.json()) {
        context.printJson(Json{{"report", report}, {"canProceed", report.canProceed()}});
    } else {
        context.printSource();
        printTarget(context, target.object);
        printPreflight(context, report);
    }
    if (!report.canProceed())
        throw CommandFailure(std::string(title(operation)) +
                             " cannot proceed: " + std::to_string(report.failures().size()) + " check(s) failed");
}

// Carries out one confirmed attempt, shows its outcome, then logs it.
void attemptConfirmed(CliContext& context, const DiskOperationTarget& target, const PreflightReport& report,
                      const std::optional<std::string>& folderName) {
    auto& machine = context.machine();
    const DiskOperationExecutor executor(machine.runner(ToolTimeout::action), machine.platform(), target.members);
    const auto entry = OperationAttempt::run(executor, report, folderName, [&machine] { return machine.now(); });

    std::optional<std::string> logProblem;
    OperationAuditLog log(OperationAuditLog::fileIn(machine.dataFolder()));
    try {
        log.record(entry);
    } catch (const FileError& error) {
        logProblem = error.what();
    }

    if (context.json()) {
        Json document{{"report", report}, {"entry", entry}, {"logged", !logProblem}};
        if (logProblem) document["logProblem"] = *logProblem;
        context.printJson(document);
    } else {
        printOutcome(context, entry);
    }
    // The outcome is on the screen before anything else is said about the log.
    std::vector<std::string> problems;
    if (!entry.succeeded) problems.push_back(std::string(title(report.operation)) + " did not complete");
    if (logProblem) problems.push_back("the attempt could not be written to the audit log: " + *logProblem);
    if (!problems.empty()) throw CommandFailure(join(problems, "; "));
}

// Availability, preflight, both shown; a question only when the preflight lets it go ahead.
void confirmAndAttempt(CliContext& context, DiskOperation operation, const std::string& targetText,
                       const std::optional<std::string>& folderName, bool assumeYes) {
    // `ops run` and `ops mkdir` both come through here: no preflight, question or change
    // without the person's consent to disk operations.
    requireConsent(context, ConsentScope::diskOperations);
    const auto target = targetNamed(context, targetText);
    const auto availability =
        DiskOperationPolicy::availability(operation, target.object, appBundlePath(), context.machine().platform());
    const auto report = runPreflight(context, operation, target);
    if (!context.json()) {
        context.printSource();
        printTarget(context, target.object);
        printAvailability(context, {availability});
        context.out() << '\n';
        printPreflight(context, report);
    }
    if (!report.canProceed()) {
        if (context.json()) context.printJson(Json{{"report", report}, {"canProceed", false}});
        throw CommandFailure(std::string(title(operation)) + " was not run: the preflight found " +
                             std::to_string(report.failures().size()) + " problem(s); nothing was changed");
    }
    context.out().flush();
    if (!context.confirm(confirmationQuestion(operation, target.object, folderName), assumeYes)) {
        if (context.json())
            context.printJson(Json{{"report", report}, {"confirmed", false}});
        else
            context.out() << "Not confirmed; nothing was changed.\n";
        return;
    }
    attemptConfirmed(context, target, report, folderName);
}

void runCommand(CliContext& context, const OpsOptions& options) {
    const auto operation = operationNamed(options.operation);
    if (operation == DiskOperation::createDirectory)
        throw UsageError("a new folder needs its name: velmora ops mkdir TARGET NAME");
    if (!isExecutableInThisBuild(operation))
        throw UsageError(DiskOperationError::notExecutable(operation).description() +
                         " Print its plan with 'velmora ops plan'.");
    confirmAndAttempt(context, operation, options.target, std::nullopt, options.yes);
}

void planFormat(CliContext& context, const OpsOptions& options) {
    const auto target = targetNamed(context, options.target);
    if (target.object.kind != DiskObjectKind::physicalDisk)
        throw UsageError("'" + terminalSafe(options.target) + "' is a " + toLower(rawValue(target.object.kind)) +
                         "; a format plan is for a whole disk");
    const auto plan = OperationPlan::format(target.object, target.volumesOnDisk, options.planName, appBundlePath(),
                                            context.machine().platform());
    if (context.json()) return context.printJson(plan);
    context.printSource();
    printPlan(context, plan);
}

void planAddVolume(CliContext& context, const OpsOptions& options) {
    const auto target = targetNamed(context, options.target);
    if (target.object.kind != DiskObjectKind::apfsContainer)
        throw UsageError("'" + terminalSafe(options.target) + "' is not an APFS container");
    const auto plan = OperationPlan::addAPFSVolume(target.object, options.volumeName);
    if (context.json()) return context.printJson(plan);
    context.printSource();
    printPlan(context, plan);
}

void showLog(CliContext& context, const OpsOptions& options) {
    if (options.limit < 1) throw UsageError("--limit must be at least 1, not " + std::to_string(options.limit));
    OperationAuditLog log(OperationAuditLog::fileIn(context.machine().dataFolder()));
    auto entries = log.entries();
    if (const auto problem = log.loadProblem()) context.err() << "velmora: warning: " << *problem << '\n';
    const auto total = entries.size();
    std::reverse(entries.begin(), entries.end());
    if (entries.size() > static_cast<std::size_t>(options.limit))
        entries.resize(static_cast<std::size_t>(options.limit));
    if (context.json()) {
        context.printJson(Json{{"file", log.fileURL().string()}, {"total", total}, {"entries", entries}});
        return;
    }
    printLog(context, log.fileURL(), entries, total);
}

}  // namespace

void registerDiskOpsCommands(CLI::App& app, CliContext& context) {
    auto options = std::make_shared<OpsOptions>();
    auto* ops = app.add_subcommand("ops", "Disk operations: what can be done, preflight, run, plans and the audit log");
    ops->add_option("target", options->target, "A disk identifier (disk4s1), a device (sdb1) or a mount path")
        ->type_name("TARGET");
    ops->require_subcommand(0, 1);

    auto* preflight = ops->add_subcommand("preflight", "Run the checks an operation needs, without running it");
    preflight->add_option("operation", options->operation, "mount, unmount, eject, verifyVolume, ...")
        ->required()
        ->type_name("OPERATION");
    preflight->add_option("target", options->target, "What to check")->required()->type_name("TARGET");
    preflight->callback([&context, options] { preflightCommand(context, *options); });

    auto* run = ops->add_subcommand("run", "Check, ask, run one operation and log it (mount, unmount, eject, verify)");
    run->add_option("operation", options->operation, "mount, unmount, eject or verifyVolume")
        ->required()
        ->type_name("OPERATION");
    run->add_option("target", options->target, "What to act on")->required()->type_name("TARGET");
    run->add_flag("--yes", options->yes, "Confirm in advance (needed without a terminal)");
    run->callback([&context, options] { runCommand(context, *options); });

    auto* mkdir = ops->add_subcommand("mkdir", "Make a new folder at the top of a volume, after checks and a question");
    mkdir->add_option("target", options->target, "The volume or mount path")->required()->type_name("TARGET");
    mkdir->add_option("name", options->folderName, "The new folder's name")->required()->type_name("NAME");
    mkdir->add_flag("--yes", options->yes, "Confirm in advance (needed without a terminal)");
    mkdir->callback([&context, options] {
        confirmAndAttempt(context, DiskOperation::createDirectory, options->target, options->folderName, options->yes);
    });

    auto* plan = ops->add_subcommand("plan", "Print a plan for formatting or adding a volume (never executed)");
    plan->require_subcommand(1, 1);
    auto* format = plan->add_subcommand("format", "How to erase a whole disk yourself, with what is at risk");
    format->add_option("disk", options->target, "The whole disk")->required()->type_name("DISK");
    format->add_option("--name", options->planName, "Name of the new volume (default Untitled)")
        ->expected(1)
        ->type_name("NAME");
    format->callback([&context, options] { planFormat(context, *options); });
    auto* addVolume = plan->add_subcommand("add-volume", "How to add an APFS volume to a container yourself");
    addVolume->add_option("container", options->target, "The APFS container")->required()->type_name("CONTAINER");
    addVolume->add_option("name", options->volumeName, "Name of the new volume")->required()->type_name("NAME");
    addVolume->callback([&context, options] { planAddVolume(context, *options); });

    auto* log = ops->add_subcommand("log", "The audit log of confirmed operations, newest first");
    log->add_option("--limit", options->limit, "Show at most N entries (default 20)")->expected(1)->type_name("N");
    log->callback([&context, options] { showLog(context, *options); });

    ops->callback([&context, ops, options] {
        if (!ops->get_subcommands().empty()) return;
        listOperations(context, *options);
    });
}

}  // namespace corvel::cli
