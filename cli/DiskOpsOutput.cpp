#include "DiskOpsOutput.h"

#include "common/ByteFormat.h"
#include "common/Text.h"
#include "processes/ProcessUsage.h"

namespace corvel::cli {
namespace {

std::string factsLine(const DiskObject& object) {
    std::vector<std::string> facts;
    const bool isFileSystem = object.kind == DiskObjectKind::volume || object.kind == DiskObjectKind::mountPoint;
    if (object.mountPoint) facts.push_back(terminalSafe(*object.mountPoint));
    else if (isFileSystem) facts.emplace_back("not mounted");
    if (object.fileSystem) facts.push_back(terminalSafe(*object.fileSystem));
    if (object.sizeBytes > 0) facts.push_back(ByteFormat::string(object.sizeBytes));
    std::vector<std::string> flags;
    if (!object.isNetwork) flags.emplace_back(object.isInternal ? "internal" : "external");
    if (object.isBootVolume)
        flags.emplace_back(object.kind == DiskObjectKind::physicalDisk ? "hosts the startup volume" : "startup");
    if (object.isNetwork) flags.emplace_back("network");
    if (object.isEjectable) flags.emplace_back("ejectable");
    if (isFileSystem && !object.isWritable) flags.emplace_back("read-only");
    if (!flags.empty()) facts.push_back(join(flags, ", "));
    if (object.physicalDiskID && *object.physicalDiskID != object.identifier)
        facts.push_back("on " + terminalSafe(*object.physicalDiskID));
    return join(facts, " · ");
}

std::string statusText(const Style& style, PreflightCheck::Status status) {
    return style.tone(toneOf(status), label(status));
}

}  // namespace

std::string confirmationQuestion(DiskOperation operation, const DiskObject& target,
                                 const std::optional<std::string>& folderName) {
    const std::string subject = terminalSafe(OperationAuditLog::targetText(target));
    if (folderName)
        return std::string(title(operation)) + " “" + terminalSafe(*folderName) + "” in " + subject + "? [y/N]";
    return std::string(title(operation)) + " " + subject + "? [y/N]";
}

void printTarget(CliContext& context, const DiskObject& object) {
    const auto& style = context.style();
    context.out() << style.bold(terminalSafe(OperationAuditLog::targetText(object))) << '\n';
    if (const auto facts = factsLine(object); !facts.empty()) context.out() << "  " << style.dim(facts) << '\n';
    context.out() << '\n';
}

void printAvailability(CliContext& context, const std::vector<OperationAvailability>& availability) {
    const auto& style = context.style();
    Table table;
    table.addRow({style.dim("OPERATION"), style.dim("STATE"), style.dim("REASON")});
    for (const auto& entry : availability) {
        const std::string state = !entry.isApplicable ? style.dim("not applicable")
                                  : entry.isEnabled   ? style.green("enabled")
                                                      : style.yellow("disabled");
        table.addRow({std::string(title(entry.operation)), state, entry.reason.value_or("")});
    }
    table.print(context.out(), "  ");
}

void printPreflight(CliContext& context, const PreflightReport& report) {
    const auto& style = context.style();
    context.out() << style.bold("Preflight for " + std::string(title(report.operation))) << '\n';
    Table checks;
    for (const auto& check : report.checks)
        checks.addRow({statusText(style, check.status), check.title, terminalSafe(check.detail)});
    checks.print(context.out(), "  ");

    if (!report.processes.empty()) {
        context.out() << '\n' << style.bold("Processes with files open on the target") << '\n';
        for (const auto& group : ProcessUsage::byProcess(report.processes)) {
            const auto count = group.usages.size();
            context.out() << "  " << terminalSafe(group.command.empty() ? "(unnamed)" : group.command) << "  "
                          << style.dim("pid " + std::to_string(group.pid) + ", " + std::to_string(count) +
                                       (count == 1 ? " file" : " files"))
                          << '\n';
            Table files;
            for (const auto& usage : group.usages)
                files.addRow({terminalSafe(usage.path), style.dim(std::string(label(usage.kind)))});
            files.print(context.out(), "    ");
        }
    }
    const auto failures = report.failures().size();
    context.out() << '\n'
                  << (failures == 0 ? style.green("No check failed.")
                                    : style.red(std::to_string(failures) + " check(s) failed."))
                  << '\n';
}

void printOutcome(CliContext& context, const OperationAuditLog::Entry& entry) {
    const auto& style = context.style();
    context.out() << (entry.succeeded ? style.green("Done: ") : style.red("Failed: ")) << terminalSafe(entry.outcome)
                  << '\n';
}

void printPlan(CliContext& context, const OperationPlan& plan) {
    const auto& style = context.style();
    context.out() << style.bold(terminalSafe(plan.title)) << '\n';
    context.out() << "  " << style.dim("A plan to review. Velmora never carries it out.") << "\n\n";
    Table table;
    auto rows = [&](const std::string& heading, const std::vector<std::string>& lines, bool numbered = false) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string text = (numbered ? std::to_string(i + 1) + ". " : "") + terminalSafe(lines[i]);
            table.addRow({i == 0 ? heading : "", text});
        }
    };
    table.addRow({"Target", terminalSafe(OperationAuditLog::targetText(plan.target))});
    if (plan.blockers.empty()) {
        table.addRow({"Blockers", style.green("none")});
    } else {
        std::vector<std::string> blockers;
        for (const auto& blocker : plan.blockers) blockers.push_back(style.red(terminalSafe(blocker)));
        for (std::size_t i = 0; i < blockers.size(); ++i) table.addRow({i == 0 ? "Blockers" : "", blockers[i]});
    }
    rows("Data at risk", plan.dataAtRisk);
    rows("Steps", plan.steps, true);
    table.addRow({"For review", plan.commandForReview ? terminalSafe(*plan.commandForReview) : style.dim("none")});
    table.addRow({"Rollback", terminalSafe(plan.rollback)});
    table.print(context.out(), "  ");
    if (!plan.blockers.empty())
        context.out() << '\n' << style.red("This plan must not be followed while it has blockers.") << '\n';
}

void printLog(CliContext& context, const std::filesystem::path& file,
              const std::vector<OperationAuditLog::Entry>& entries, std::size_t total) {
    const auto& style = context.style();
    context.out() << style.bold("Audit log") << ' ' << style.dim(terminalSafe(file.string())) << '\n';
    if (entries.empty()) {
        context.out() << "  " << style.dim("No confirmed operations yet.") << '\n';
        return;
    }
    Table table;
    table.addRow({style.dim("DATE"), style.dim("OPERATION"), style.dim("TARGET"), style.dim("RESULT"),
                  style.dim("OUTCOME")});
    for (const auto& entry : entries)
        table.addRow({ISO8601::format(entry.date), std::string(rawValue(entry.operation)), terminalSafe(entry.target),
                      entry.succeeded ? style.green("done") : style.red("failed"), terminalSafe(entry.outcome)});
    table.print(context.out(), "  ");
    if (entries.size() < total)
        context.out() << "  "
                      << style.dim("The newest " + std::to_string(entries.size()) + " of " + std::to_string(total) +
                                   " entries; --limit N shows more.")
                      << '\n';
}

}  // namespace corvel::cli
