#include "agent/Agent.h"

#include "agent/AgentNotifier.h"
#include "agent/InstanceLock.h"
#include "common/AtomicFile.h"
#include "machine/MachineMetrics.h"
#include "monitoring/AlertTracker.h"
#include "monitoring/MetricsExposition.h"

#include <unistd.h>

#include <fmt/format.h>
#include <chrono>

namespace corvel {
namespace {

std::string plural(std::size_t count, const char* one, const char* many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

double secondsSince(std::chrono::steady_clock::time_point started) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

// The node exporter's textfile collector serves whatever the folder holds, so a failed write keeps
// the previous file whole and the cycle goes on; the warning says why the figures are old.
void writeMetrics(Machine& machine, const RefreshCycle::Result& refresh, const CorvelSettings& settings,
                  const AgentConfiguration& configuration, MachineMetrics::AgentFigures agent,
                  std::vector<std::string>& warnings) {
    auto input = MachineMetrics::gather(machine, refresh, settings.thresholds, warnings);
    input.agent = agent;
    try {
        MetricsExposition::writeTextfile(*configuration.textfileDirectory,
                                         MetricsExposition::render(MachineMetrics::families(input)));
    } catch (const FileError& error) {
        warnings.push_back(std::string("Metrics not written: ") + error.what());
    }
}

}  // namespace

Agent::Agent(AgentOptions options, Log log)
    : options_(std::move(options)),
      log_(std::move(log)),
      files_(Machine::open(options_.machine).dataFolder()),
      history_(HistoryStore::defaultURL(files_.folder())),
      events_(files_.events(), AgentFiles::eventLimit) {
    status_.pid = ::getpid();
    status_.startedAt = Machine::open(options_.machine).now();
}

void Agent::writeStatus(AgentStatus status) {
    try {
        AgentFiles::write(files_.status(), status);
    } catch (const FileError& error) {
        log_(std::string("warning: ") + error.what());
    }
}

void Agent::persist(const RefreshCycle::Result& refresh, const AlertTracker& alerts,
                    std::vector<std::string>& warnings) {
    try {
        for (const auto& event : refresh.events) events_.append(event);
    } catch (const FileError& error) {
        warnings.emplace_back(error.what());
    }
    try {
        AgentFiles::write(files_.state(), AgentState{alerts.active});
    } catch (const FileError& error) {
        warnings.emplace_back(error.what());
    }
    try {
        AgentFiles::write(files_.inventory(), AgentInventory{refresh.snapshot.capturedAt, refresh.snapshot});
    } catch (const FileError& error) {
        warnings.emplace_back(error.what());
    }
}

AgentCycleReport Agent::runCycle(const StopSignal* stop) {
    const auto started = std::chrono::steady_clock::now();
    AgentCycleReport report;
    auto& warnings = report.warnings;
    if (firstCycle_) {
        firstCycle_ = false;
        if (auto previous = AgentFiles::read<AgentStatus>(files_.status()); previous.problem)
            warnings.push_back(*previous.problem + "; it was reset");
    }

    std::optional<Machine> machine;
    try {
        machine.emplace(Machine::open(options_.machine));
    } catch (const MachineError& error) {
        warnings.push_back(std::string("Could not open the machine: ") + error.what());
    }
    const TimePoint now = machine ? machine->now() : currentTime();
    CorvelSettings settings = CorvelSettings::defaults("/");
    if (machine) {
        auto loaded = machine->settings();
        if (loaded.warning) warnings.push_back(*loaded.warning);
        settings = std::move(loaded.settings);
    }
    report.configuration = AgentConfiguration::from(settings, options_.overrides);
    const auto& configuration = report.configuration;

    if (machine && configuration.monitoringEnabled) {
        AlertTracker alerts;
        auto state = AgentFiles::read<AgentState>(files_.state());
        if (state.problem) warnings.push_back(*state.problem + "; alerts start afresh");
        if (state.value) alerts.restore(state.value->activeAlerts);
        auto inventory = AgentFiles::read<AgentInventory>(files_.inventory());
        if (inventory.problem) warnings.push_back(*inventory.problem + "; mount changes start afresh");

        RefreshCycle::Steps steps;
        steps.previous = inventory.value ? &inventory.value->snapshot : nullptr;
        steps.alerts = &alerts;
        steps.history = &history_;
        steps.recordHistory = true;
        auto refresh = RefreshCycle::run(*machine, settings, steps);
        warnings.insert(warnings.end(), refresh.snapshot.warnings.begin(), refresh.snapshot.warnings.end());
        warnings.insert(warnings.end(), refresh.warnings.begin(), refresh.warnings.end());

        if (stop && stop->requested()) {
            report.stoppedEarly = true;
            log_("stop requested during the cycle: its findings were not saved");
            report.refresh = std::move(refresh);
            return report;
        }
        persist(refresh, alerts, warnings);
        const auto installed = [&machine](const std::string& executable) { return machine->toolInstalled(executable); };
        for (const auto& line :
             AgentNotifier::send(refresh.events, machine->platform(), machine->runner(ToolTimeout::discovery),
                                 installed, configuration.notificationsEnabled))
            log_(line);
        if (configuration.textfileDirectory)
            writeMetrics(*machine, refresh, settings, configuration,
                         {now, secondsSince(started), configuration.interval.count()}, warnings);
        report.monitored = true;
        report.refresh = std::move(refresh);
    } else if (machine) {
        log_("monitoring is off (monitoringEnabled is false): nothing was checked");
    }

    ++status_.cycles;
    status_.intervalSeconds = configuration.interval.count();
    status_.monitoringEnabled = configuration.monitoringEnabled;
    status_.notificationsEnabled = configuration.notificationsEnabled;
    status_.lastCycleAt = now;
    status_.lastCycleSeconds = secondsSince(started);
    status_.nextCycleAt =
        options_.once
            ? std::nullopt
            : std::optional<TimePoint>(now + std::chrono::duration_cast<TimePoint::duration>(configuration.interval));
    status_.volumeCount = report.refresh ? static_cast<std::int64_t>(report.refresh->snapshot.volumes.size()) : 0;
    status_.findingCount =
        report.refresh ? static_cast<std::int64_t>(report.refresh->diagnosis.report.findings.size()) : 0;
    status_.eventCount = report.refresh ? static_cast<std::int64_t>(report.refresh->events.size()) : 0;
    status_.warnings = warnings;
    writeStatus(status_);

    if (report.refresh) {
        log_(fmt::format("cycle {} ({}): {}, {}, {} ({})", status_.cycles, ISO8601::format(now),
                         plural(report.refresh->snapshot.volumes.size(), "volume", "volumes"),
                         plural(report.refresh->diagnosis.report.findings.size(), "finding", "findings"),
                         plural(report.refresh->events.size(), "event", "events"),
                         plural(report.refresh->alerts.size(), "alert", "alerts")));
    }
    for (const auto& warning : warnings) log_("warning: " + warning);
    return report;
}

void Agent::run(const StopSignal& stop) {
    auto lock = InstanceLock::acquire(files_.lock());
    if (!lock) {
        const auto holder = InstanceLock::holder(files_.lock());
        throw AgentAlreadyRunning("another agent is already running for this data folder" +
                                  (holder ? " (pid " + std::to_string(*holder) + ")" : std::string()));
    }
    status_.isRunning = true;
    while (!stop.requested()) {
        const auto report = runCycle(&stop);
        if (options_.once || stop.requested()) break;
        stop.waitFor(std::chrono::duration_cast<std::chrono::milliseconds>(report.configuration.interval));
    }
    status_.isRunning = false;
    status_.nextCycleAt.reset();
    writeStatus(status_);
}

}  // namespace corvel
