// The monitoring screen's state: the free-space history the agent keeps, per volume with its
// trend and forecast (the core's grouping, as `velmora history` shows it), the monitor events and
// alerts the agent recorded, and the agent itself: registered or not, running or not, its last
// cycle. Turning the agent on or off goes through the core's agent setup, and turning it on needs
// the background-agent consent, exactly as `--agent-register` does. Everything is read on a
// background thread.
//
//   MonitoringModel model(session);
//   model.load();                 // changed when read
//   model.setAgentEnabled(true);  // agentLineChanged: "agent: registered …" or why not
#pragma once

#include "agent/AgentRecords.h"
#include "agent/AgentRegistration.h"
#include "monitoring/MonitorEvent.h"
#include "monitoring/VolumeHistory.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class MonitoringModel : public QObject {
    Q_OBJECT
public:
    // The newest events the screen lists at most.
    static constexpr std::size_t eventsShown = 50;

    struct Values {
        std::vector<VolumeHistory> volumes;
        std::vector<MonitorEvent> events;  // newest first
        std::optional<AgentStatus> status;
        AgentRegistration::Registration registration;
        std::optional<std::int64_t> runningPid;
        std::vector<std::string> problems;  // files that could not be read
    };

    explicit MonitoringModel(CoreSession& session, QObject* parent = nullptr);

    void load();
    // Registers or unregisters the agent; does nothing while a change is under way.
    void setAgentEnabled(bool enabled);

    bool isLoaded() const { return loaded_; }
    bool isChanging() const { return changing_; }
    const Values& values() const { return values_; }
    bool agentRegistered() const { return values_.registration.mechanism.has_value(); }
    // Of the events shown, the alerts, and the volumes mounted and unmounted; newest first.
    std::vector<MonitorEvent> alerts() const { return eventsWhere(true); }
    std::vector<MonitorEvent> mountEvents() const { return eventsWhere(false); }
    // The last answer to turning the agent on or off, one line.
    const std::string& agentLine() const { return agentLine_; }

Q_SIGNALS:
    void changed();
    void agentLineChanged();

private:
    std::vector<MonitorEvent> eventsWhere(bool alerts) const;

    CoreSession& session_;
    Values values_;
    std::string agentLine_;
    bool loaded_ = false;
    bool changing_ = false;
};

}  // namespace corvel::desktop
