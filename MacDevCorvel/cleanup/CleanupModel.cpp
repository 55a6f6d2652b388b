#include "cleanup/CleanupModel.h"

#include "cleanup/CleanupHistory.h"
#include "common/AtomicFile.h"
#include "machine/CleanupReading.h"
#include "shell/CoreSession.h"

#include <atomic>

namespace corvel::desktop {
namespace {

struct SimulationOutcome {
    std::optional<CleanupRunResult> result;
    std::vector<std::string> problems;
};

struct HistoryOutcome {
    std::vector<CleanupSimulation> simulations;
    std::optional<std::string> problem;
};

HistoryOutcome readHistory(Machine& machine) {
    auto history = CleanupHistory::open(machine.dataFolder());
    HistoryOutcome outcome;
    outcome.simulations = CleanupHistory::newestFirst(history.all(), CleanupModel::historyShown);
    outcome.problem = history.loadProblem();
    return outcome;
}

// Simulates and saves the simulation in the history, as `velmora cleanup simulate` does; a
// history that cannot be written is a problem shown beside the simulation, not a failure.
SimulationOutcome simulatePaths(Machine& machine, const std::vector<std::string>& paths, ScanProgress& progress,
                                const std::atomic<bool>& cancelled) {
    SimulationOutcome outcome;
    try {
        const auto settings = machine.settings();
        if (settings.warning) outcome.problems.push_back(*settings.warning);
        const auto sources = cleanupSources(machine, settings.settings.projectRoots);
        auto run = CleanupRun::simulatePaths(paths, sources, progress, [&cancelled] { return cancelled.load(); });
        if (run.wasCancelled) return outcome;
        auto history = CleanupHistory::open(machine.dataFolder());
        try {
            history.append(run.simulation);
        } catch (const FileError& failure) {
            outcome.problems.push_back(std::string("could not save the simulation in the cleanup history: ") +
                                       failure.what());
        }
        outcome.result = std::move(run);
    } catch (const CleanupRunError& failure) {
        outcome.problems.push_back(failure.what());
    }
    return outcome;
}

}  // namespace

struct CleanupModel::Running {
    ScanProgress progress;
    std::atomic<bool> cancelled{false};
};

CleanupModel::CleanupModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    poller_.setInterval(100);
    connect(&poller_, &QTimer::timeout, this, &CleanupModel::poll);
}

CleanupModel::~CleanupModel() {
    cancel();
}

void CleanupModel::simulate(std::vector<std::string> paths) {
    if (state_ == State::simulating || paths.empty()) return;
    selection_ = std::move(paths);
    running_ = std::make_shared<Running>();
    progress_ = {};
    problems_.clear();
    state_ = State::simulating;
    Q_EMIT stateChanged();
    poller_.start();
    session_.run(
        this,
        [&machine = session_.machine(), paths = selection_, running = running_] {
            return simulatePaths(machine, paths, running->progress, running->cancelled);
        },
        [this](SimulationOutcome outcome) {
            poller_.stop();
            poll();
            problems_ = std::move(outcome.problems);
            if (outcome.result) {
                result_ = std::move(outcome.result);
                shown_ = result_->simulation;
                state_ = State::finished;
            } else {
                state_ = running_->cancelled.load() ? State::idle : State::failed;
            }
            Q_EMIT stateChanged();
            loadHistory();
        });
}

void CleanupModel::cancel() {
    if (running_) running_->cancelled.store(true);
}

void CleanupModel::loadHistory() {
    session_.run(
        this, [&machine = session_.machine()] { return readHistory(machine); },
        [this](HistoryOutcome outcome) {
            history_ = std::move(outcome.simulations);
            if (outcome.problem) problems_.push_back(*outcome.problem);
            Q_EMIT historyChanged();
            // Until something is simulated here, the screen shows the last saved simulation.
            if (!shown_ && !history_.empty()) {
                shown_ = history_.front();
                Q_EMIT stateChanged();
            }
        });
}

void CleanupModel::showSaved(std::size_t index) {
    if (index >= history_.size()) return;
    shown_ = history_[index];
    Q_EMIT stateChanged();
}

void CleanupModel::poll() {
    if (!running_) return;
    auto now = running_->progress.snapshot();
    if (now == progress_) return;
    progress_ = std::move(now);
    Q_EMIT progressChanged();
}

}  // namespace corvel::desktop
