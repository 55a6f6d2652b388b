#include "monitoring/MonitoringModel.h"

#include "agent/AgentSetup.h"
#include "agent/InstanceLock.h"
#include "common/JSONHistory.h"
#include "consent/ConsentGate.h"
#include "consent/ConsentLedger.h"
#include "monitoring/CapacityForecast.h"
#include "monitoring/HistoryStore.h"
#include "shell/CoreSession.h"

#include <algorithm>

namespace corvel::desktop {
namespace {

MonitoringModel::Values readMonitoring(Machine& machine) {
    MonitoringModel::Values values;
    HistoryStore history(HistoryStore::defaultURL(machine.dataFolder()));
    values.volumes = VolumeHistory::group(history.allSamples(), CapacityForecast::standardMinimumSpan);
    if (auto problem = history.loadProblem()) values.problems.push_back(*problem);

    const AgentFiles files(machine.dataFolder());
    JSONHistory<MonitorEvent> events(files.events(), AgentFiles::eventLimit);
    auto all = events.all();
    if (auto problem = events.loadProblem()) values.problems.push_back(*problem);
    const auto shown = std::min(all.size(), MonitoringModel::eventsShown);
    values.events.assign(all.rbegin(), all.rbegin() + static_cast<std::ptrdiff_t>(shown));

    auto status = AgentFiles::read<AgentStatus>(files.status());
    values.status = std::move(status.value);
    if (status.problem) values.problems.push_back(*status.problem + "; the agent's next cycle replaces it");
    try {
        values.registration = AgentRegistration::inspect(AgentSetup::hostFor(machine));
    } catch (const std::exception& error) {
        values.problems.push_back(std::string("could not tell whether the agent is registered: ") + error.what());
    }
    if (const auto pid = InstanceLock::holder(files.lock())) values.runningPid = *pid;
    return values;
}

// The same steps as the application's --agent-register and --agent-unregister: the agent runs
// the command line installed beside this program.
std::string changeAgent(Machine& machine, bool registering) {
    const char* verb = registering ? "register" : "unregister";
    try {
        // Stopping the agent never needs permission; starting it at login does.
        const auto ledger = ConsentLedger::load(ConsentLedger::defaultURL(machine.dataFolder()));
        if (const auto refusal = ConsentGate::refusal(ledger, ConsentScope::backgroundAgent); refusal && registering)
            return std::string("agent: could not ") + verb + ": " + *refusal;
        const auto program = AgentSetup::runningProgram();
        const auto velmora = AgentSetup::commandLineBeside(program);
        if (!velmora) return std::string("agent: could not ") + verb + ": no velmora command line beside " + program;
        return AgentSetup::change(machine, *velmora, registering).line;
    } catch (const std::exception& error) {
        return std::string("agent: could not ") + verb + ": " + error.what();
    }
}

}  // namespace

MonitoringModel::MonitoringModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {}

void MonitoringModel::load() {
    session_.run(
        this, [&machine = session_.machine()] { return readMonitoring(machine); },
        [this](Values values) {
            values_ = std::move(values);
            loaded_ = true;
            Q_EMIT changed();
        });
}

void MonitoringModel::setAgentEnabled(bool enabled) {
    if (changing_) return;
    changing_ = true;
    Q_EMIT changed();
    session_.run(
        this, [&machine = session_.machine(), enabled] { return changeAgent(machine, enabled); },
        [this](std::string line) {
            agentLine_ = std::move(line);
            changing_ = false;
            Q_EMIT agentLineChanged();
            load();
        });
}

std::vector<MonitorEvent> MonitoringModel::eventsWhere(bool alerts) const {
    std::vector<MonitorEvent> chosen;
    std::copy_if(values_.events.begin(), values_.events.end(), std::back_inserter(chosen),
                 [alerts](const MonitorEvent& event) { return (event.kind == MonitorEventKind::alert) == alerts; });
    return chosen;
}

}  // namespace corvel::desktop
