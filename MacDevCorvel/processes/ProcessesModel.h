// The processes screen's state: the running groups, busiest first, sampled by the core on a pool
// thread (a recorded machine has none and says so), the person's own or everyone's; the action
// policy's decision per group and action; the outcome of the last action and the action records.
// Acting needs the process control consent, the policy's yes and (in the view) a confirmation.
//
//   model.load();
//   auto decision = model.decide(ProcessAction::quit, group);
//   if (decision.allowed && askPerson(model.confirmationText(ProcessAction::quit, group))) model.act(...);
#pragma once

#include "machine/MachineProcesses.h"
#include "processes/ProcessActionRecord.h"

#include <QObject>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class ProcessesModel : public QObject {
    Q_OBJECT
public:
    explicit ProcessesModel(CoreSession& session, QObject* parent = nullptr);

    // Absent when the machine has processes to show; otherwise why not (a recording).
    std::optional<std::string> unavailable() const;
    void load();
    bool isBusy() const { return busy_; }
    bool isLoaded() const { return loaded_; }

    void setShowAll(bool all);
    bool showsAll() const { return all_; }
    // The person's own groups, or every user's, busiest first.
    std::vector<ProcessGroup> groups() const;

    ProcessActionPolicy::Decision decide(ProcessAction action, const ProcessGroup& group) const;
    QString confirmationText(ProcessAction action, const ProcessGroup& group) const;
    // Why act() would refuse now (consent, then the policy); absent when it may act.
    std::optional<std::string> actionRefusal(ProcessAction action, const ProcessGroup& group) const;
    void act(ProcessAction action, const ProcessGroup& group);
    // What the last action did, in words.
    const std::string& lastOutcome() const { return outcome_; }

    // Oldest first, as kept.
    const std::vector<ProcessActionRecord>& records() const { return records_; }
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void changed();

private:
    void reloadRecords();

    CoreSession& session_;
    MachineProcesses::Reading reading_;
    std::vector<ProcessActionRecord> records_;
    std::string outcome_;
    std::string error_;
    bool all_ = false;
    bool busy_ = false;
    bool loaded_ = false;
};

}  // namespace corvel::desktop
