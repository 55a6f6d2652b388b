#include "diskops/DiskOpsModel.h"

#include "diskops/DiskOperationExecutor.h"
#include "diskops/DiskOperationPolicy.h"
#include "diskops/DiskOperationPreflight.h"
#include "diskops/OperationAttempt.h"
#include "machine/MachineOpenFiles.h"
#include "processes/CurrentProcess.h"
#include "settings/ConsentModel.h"
#include "shell/CoreSession.h"

#include <QString>
#include <algorithm>
#include <set>

namespace corvel::desktop {
namespace {

// The running program plays the part of the application bundle, as for the command line: the
// volume it runs from is never unmounted under it.
std::string appBundlePath() {
    return currentExecutablePath().value_or("");
}

std::vector<DiskOperationTarget> gatherTargets(Machine& machine, const StorageSnapshot& snapshot) {
    const auto sources = DiskOperationTargets::gather(machine, snapshot);
    std::vector<DiskOperationTarget> targets;
    std::set<std::string> seen;
    const auto add = [&](const std::string& name) {
        auto target = DiskOperationTargets::resolve(sources, name);
        if (target && seen.insert(target->object.id()).second) targets.push_back(std::move(*target));
    };
    for (const auto& volume : snapshot.volumes) add(volume.mountPoint);
    for (const auto& disk : snapshot.disks) add(disk.id);
    return targets;
}

struct LogReading {
    std::vector<OperationAuditLog::Entry> entries;
    std::optional<std::string> problem;
};

LogReading readLog(Machine& machine) {
    OperationAuditLog log(OperationAuditLog::fileIn(machine.dataFolder()));
    LogReading reading{log.entries(), log.loadProblem()};
    std::reverse(reading.entries.begin(), reading.entries.end());
    return reading;
}

}  // namespace

DiskOpsModel::DiskOpsModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    reloadLog();
}

void DiskOpsModel::setSnapshot(StorageSnapshot snapshot) {
    session_.run(
        this,
        [&machine = session_.machine(), snapshot = std::move(snapshot)] { return gatherTargets(machine, snapshot); },
        [this](std::vector<DiskOperationTarget> targets) {
            // The same object stays chosen across refreshes when it is still there.
            const auto chosen = target() ? std::optional<std::string>(target()->object.id()) : std::nullopt;
            targets_ = std::move(targets);
            selected_ = targets_.empty() ? -1 : 0;
            for (std::size_t i = 0; chosen && i < targets_.size(); ++i)
                if (targets_[i].object.id() == *chosen) selected_ = static_cast<int>(i);
            loaded_ = true;
            Q_EMIT changed();
        });
}

void DiskOpsModel::select(int index) {
    if (index < 0 || index >= static_cast<int>(targets_.size()) || index == selected_) return;
    selected_ = index;
    report_.reset();
    outcome_.reset();
    error_.clear();
    Q_EMIT changed();
}

const DiskOperationTarget* DiskOpsModel::target() const {
    if (selected_ < 0 || selected_ >= static_cast<int>(targets_.size())) return nullptr;
    return &targets_[static_cast<std::size_t>(selected_)];
}

std::vector<OperationAvailability> DiskOpsModel::availability() const {
    std::vector<OperationAvailability> offered;
    if (const auto* chosen = target())
        for (auto& one : DiskOperationPolicy::all(chosen->object, appBundlePath(), session_.machine().platform()))
            if (one.isApplicable) offered.push_back(std::move(one));
    return offered;
}

void DiskOpsModel::preflight(DiskOperation operation) {
    const auto* chosen = target();
    if (!chosen || busy_) return;
    busy_ = true;
    report_.reset();
    outcome_.reset();
    error_.clear();
    Q_EMIT changed();
    session_.run(
        this,
        [&machine = session_.machine(), operation, target = *chosen] {
            const auto lister = MachineOpenFiles::lister(machine);
            const DiskOperationPreflight preflight(machine.runner(ToolTimeout::inspection), *lister, appBundlePath(),
                                                   machine.platform());
            return preflight.run(operation, target.object, target.volumesOnDisk, machine.now());
        },
        [this](PreflightReport report) {
            busy_ = false;
            report_ = std::move(report);
            Q_EMIT changed();
        });
}

QString DiskOpsModel::confirmationText() const {
    if (!report_) return {};
    return QString::fromStdString(std::string(title(report_->operation)) + " " +
                                  OperationAuditLog::targetText(report_->target) + "?");
}

std::optional<std::string> DiskOpsModel::runRefusal() const {
    if (!report_) return "Run the preflight first.";
    if (!isExecutableInThisBuild(report_->operation))
        return std::string(title(report_->operation)) + " is shown as a plan only; Velmora does not carry it out.";
    if (!report_->canProceed())
        return "The preflight found " + std::to_string(report_->failures().size()) +
               " problem(s); nothing will be changed.";
    if (report_->operation == DiskOperation::createDirectory) return "A new folder is made from the command line.";
    return consentRefusal(session_.machine(), ConsentScope::diskOperations);
}

void DiskOpsModel::run() {
    if (busy_ || runRefusal()) return;
    const auto* chosen = target();
    if (!chosen) return;
    busy_ = true;
    Q_EMIT changed();
    struct Attempt {
        OperationAuditLog::Entry entry;
        std::optional<std::string> logProblem;
    };
    session_.run(
        this,
        [&machine = session_.machine(), report = *report_, members = chosen->members] {
            const DiskOperationExecutor executor(machine.runner(ToolTimeout::action), machine.platform(), members);
            Attempt attempt{OperationAttempt::run(executor, report, std::nullopt, [&machine] { return machine.now(); }),
                            std::nullopt};
            OperationAuditLog log(OperationAuditLog::fileIn(machine.dataFolder()));
            try {
                log.record(attempt.entry);
            } catch (const FileError& problem) {
                attempt.logProblem = problem.what();
            }
            return attempt;
        },
        [this](Attempt attempt) {
            busy_ = false;
            outcome_ = std::move(attempt.entry);
            // One report is consumed by one execution: the next run needs a fresh preflight.
            report_.reset();
            error_ = attempt.logProblem ? "The attempt could not be written to the audit log: " + *attempt.logProblem
                                        : std::string();
            reloadLog();
        });
}

void DiskOpsModel::reloadLog() {
    auto reading = readLog(session_.machine());
    log_ = std::move(reading.entries);
    logProblem_ = std::move(reading.problem);
    Q_EMIT changed();
}

}  // namespace corvel::desktop
