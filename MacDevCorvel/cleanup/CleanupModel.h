// The cleanup screen's state: a simulation of removing the items a person selected (the core's
// simulation: eligible items, excluded ones with the safety rule's reason, the checks and the
// recoverable space), run on a background thread and saved in the cleanup history as the command
// line saves it, and that history, newest first. Nothing here deletes anything.
//
//   CleanupModel model(session);
//   model.simulate({"/Users/me/Library/Caches/npm"});   // stateChanged when done
//   model.shown();                                      // the simulation on screen
//   model.loadHistory();  model.showSaved(0);
#pragma once

#include "cleanup/CleanupRun.h"

#include <QObject>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class CleanupModel : public QObject {
    Q_OBJECT
public:
    enum class State { idle, simulating, finished, failed };
    // The simulations the history list shows at most.
    static constexpr std::size_t historyShown = 50;

    explicit CleanupModel(CoreSession& session, QObject* parent = nullptr);
    ~CleanupModel() override;

    // Does nothing while a simulation runs or when `paths` is empty.
    void simulate(std::vector<std::string> paths);
    void cancel();
    // Reads the saved simulations again (on a background thread); historyChanged follows.
    void loadHistory();
    // Shows the saved simulation at `index` of history().
    void showSaved(std::size_t index);

    State state() const { return state_; }
    const std::vector<std::string>& selection() const { return selection_; }
    const ScanProgress::Snapshot& progress() const { return progress_; }
    // The last simulation run here, with the paths left out of it.
    const std::optional<CleanupRunResult>& result() const { return result_; }
    // What the screen shows: the last run's simulation, or one chosen from the history (at first
    // the newest saved one).
    const std::optional<CleanupSimulation>& shown() const { return shown_; }
    const std::vector<CleanupSimulation>& history() const { return history_; }
    // Why the last simulation failed, or why saving or reading the history did.
    const std::vector<std::string>& problems() const { return problems_; }

Q_SIGNALS:
    void stateChanged();
    void progressChanged();
    void historyChanged();

private:
    struct Running;
    void poll();

    CoreSession& session_;
    State state_ = State::idle;
    std::vector<std::string> selection_;
    std::shared_ptr<Running> running_;
    ScanProgress::Snapshot progress_;
    std::optional<CleanupRunResult> result_;
    std::optional<CleanupSimulation> shown_;
    std::vector<CleanupSimulation> history_;
    std::vector<std::string> problems_;
    QTimer poller_;
};

}  // namespace corvel::desktop
