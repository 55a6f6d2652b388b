// The background agent: at an interval, one refresh cycle of this machine (the same one `velmora
// status` and the desktop application run), whose mount changes and new or worsened findings
// become monitor events and notifications, whose volume samples go into the history, and whose
// outcome lands in the agent's four files, each replaced atomically. The machine and the settings
// are opened afresh every cycle, so a changed setting needs no restart.
//
//   Agent agent(options, [](const std::string& line) { std::cerr << line << '\n'; });
//   StopSignal stop;
//   return agent.run(stop);     // until SIGTERM, or one cycle with options.once
//
// One agent per user: `run` holds a lock in the data folder and refuses to start beside another.
#pragma once

#include "agent/AgentConfiguration.h"
#include "agent/AgentRecords.h"
#include "agent/StopSignal.h"
#include "common/JSONHistory.h"
#include "machine/Machine.h"
#include "machine/RefreshCycle.h"
#include "monitoring/HistoryStore.h"
#include "monitoring/MonitorEvent.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvel {

// Another agent holds the lock; the text names its process.
class AgentAlreadyRunning : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct AgentOptions {
    MachineOptions machine;  // reopened every cycle: a recording may change between cycles
    bool once = false;
    AgentOverrides overrides;
};

// What one cycle did, for the log and for tests.
struct AgentCycleReport {
    bool monitored = false;  // false: monitoring is off, or the machine could not be opened
    bool stoppedEarly = false;  // a stop came after the refresh: nothing of it was saved
    AgentConfiguration configuration;
    std::optional<RefreshCycle::Result> refresh;
    std::vector<std::string> warnings;
};

class Agent {
public:
    using Log = std::function<void(const std::string&)>;

    // Opens the machine once to learn the data folder; throws MachineError for bad options.
    Agent(AgentOptions options, Log log);

    const AgentFiles& files() const { return files_; }

    // One cycle. Never throws: every problem becomes a warning in the status file and the log.
    AgentCycleReport runCycle(const StopSignal* stop = nullptr);

    // Cycles until a stop is requested (or once); the status file says when it ends. Throws
    // AgentAlreadyRunning when another agent holds the lock, FileError when the lock cannot be made.
    void run(const StopSignal& stop);

private:
    void writeStatus(AgentStatus status);
    void persist(const RefreshCycle::Result& refresh, const AlertTracker& alerts, std::vector<std::string>& warnings);

    AgentOptions options_;
    Log log_;
    AgentFiles files_;
    HistoryStore history_;
    JSONHistory<MonitorEvent> events_;
    AgentStatus status_;
    bool firstCycle_ = true;
};

}  // namespace corvel
