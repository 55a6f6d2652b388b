#include "processes/ProcessesModel.h"

#include "processes/ProcessActionLog.h"
#include "settings/ConsentModel.h"
#include "shell/CoreSession.h"

#include <QString>

namespace corvel::desktop {
namespace {

struct Sampled {
    MachineProcesses::Reading reading;
    std::string error;
};

struct Acted {
    ProcessActionResult result;
    std::string error;
};

}  // namespace

ProcessesModel::ProcessesModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    reloadRecords();
}

std::optional<std::string> ProcessesModel::unavailable() const {
    if (MachineProcesses::isAvailable(session_.machine())) return std::nullopt;
    return MachineProcesses::replayText();
}

void ProcessesModel::load() {
    if (busy_ || unavailable()) return;
    busy_ = true;
    Q_EMIT changed();
    session_.run(
        this,
        [&machine = session_.machine()] {
            Sampled sampled;
            try {
                // Half a second of CPU time is enough to tell the busy from the idle.
                sampled.reading = MachineProcesses::read(machine, std::chrono::milliseconds(500));
            } catch (const std::exception& error) {
                sampled.error = error.what();
            }
            return sampled;
        },
        [this](Sampled sampled) {
            busy_ = false;
            loaded_ = true;
            reading_ = std::move(sampled.reading);
            error_ = std::move(sampled.error);
            Q_EMIT changed();
        });
}

void ProcessesModel::setShowAll(bool all) {
    if (all_ == all) return;
    all_ = all;
    Q_EMIT changed();
}

std::vector<ProcessGroup> ProcessesModel::groups() const {
    std::vector<ProcessGroup> shown;
    for (const auto& group : reading_.groups)
        if (all_ || group.isCurrentUser) shown.push_back(group);
    return ProcessGrouping::sorted(std::move(shown), ProcessSort::cpu);
}

ProcessActionPolicy::Decision ProcessesModel::decide(ProcessAction action, const ProcessGroup& group) const {
    return ProcessActionPolicy::decide(action, group, MachineProcesses::ownPID());
}

QString ProcessesModel::confirmationText(ProcessAction action, const ProcessGroup& group) const {
    QStringList pids;
    for (const auto pid : group.pids) pids << QString::number(pid);
    return QStringLiteral("%1 %2 (%3 process%4: %5)?")
        .arg(QString::fromStdString(std::string(title(action))), QString::fromStdString(group.name))
        .arg(group.pids.size())
        .arg(group.pids.size() == 1 ? "" : "es")
        .arg(pids.join(QStringLiteral(", ")));
}

std::optional<std::string> ProcessesModel::actionRefusal(ProcessAction action, const ProcessGroup& group) const {
    if (auto refusal = consentRefusal(session_.machine(), ConsentScope::processControl)) return refusal;
    const auto decision = decide(action, group);
    if (!decision.allowed) return decision.reason.value_or("not allowed");
    return std::nullopt;
}

void ProcessesModel::act(ProcessAction action, const ProcessGroup& group) {
    if (busy_ || unavailable()) return;
    if (const auto refusal = actionRefusal(action, group)) {
        outcome_ = group.name + ": " + *refusal;
        Q_EMIT changed();
        return;
    }
    busy_ = true;
    Q_EMIT changed();
    session_.run(
        this,
        [&machine = session_.machine(), action, group, reading = reading_] {
            Acted acted;
            try {
                acted.result = MachineProcesses::perform(machine, action, group, reading);
            } catch (const std::exception& error) {
                acted.error = error.what();
            }
            return acted;
        },
        [this, name = group.name](Acted acted) {
            busy_ = false;
            const auto& result = acted.result;
            if (!acted.error.empty())
                outcome_ = name + ": " + acted.error;
            else if (result.record)
                outcome_ = name + ": " + result.record->outcome;
            else
                outcome_ = name + ": " + result.decision.reason.value_or("nothing was done");
            error_ = result.logProblem ? "The action was not recorded: " + *result.logProblem : std::string();
            reloadRecords();
            load();
        });
}

void ProcessesModel::reloadRecords() {
    ProcessActionLog log(session_.machine().dataFolder());
    records_ = log.all();
    if (const auto problem = log.loadProblem()) error_ = *problem;
    Q_EMIT changed();
}

}  // namespace corvel::desktop
