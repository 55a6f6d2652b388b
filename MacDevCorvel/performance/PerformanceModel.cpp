#include "performance/PerformanceModel.h"

#include "agent/InstanceLock.h"
#include "benchmark/BenchmarkPreflight.h"
#include "benchmark/BenchmarkVolume.h"
#include "common/ByteFormat.h"
#include "common/JSONHistory.h"
#include "settings/ConsentModel.h"
#include "shell/CoreSession.h"

#include <QString>
#include <algorithm>

namespace corvel::desktop {
namespace {

struct Outcome {
    std::optional<BenchmarkRun> run;
    std::string error;
    std::optional<std::string> saveProblem;
};

// The command line's sequence: inspect, hold the volume's lock, the preflight, the run, the history.
Outcome measure(Machine& machine, const std::string& folder, BenchmarkProgress& progress,
                const std::atomic<bool>& cancelled) {
    Outcome outcome;
    try {
        BenchmarkOptions options;
        options.folder = folder;
        options.fileBytes = PerformanceModel::fileBytes;
        options.secondsPerJob = PerformanceModel::secondsPerJob;
        options.pauseSeconds = std::min(1.0, options.secondsPerJob / 5);
        if (auto problem = options.problem()) {
            outcome.error = *problem;
            return outcome;
        }
        const auto facts = BenchmarkVolume::inspect(folder);
        std::string lockName = "benchmark-" + facts.deviceID + ".lock";
        std::replace(lockName.begin(), lockName.end(), ':', '-');
        auto lock = InstanceLock::acquire(machine.dataFolder() / lockName);
        if (auto refusal = BenchmarkPreflight::check(facts, options, !lock.has_value())) {
            outcome.error = refusal->message;
            return outcome;
        }
        outcome.run = BenchmarkEngine::run(
            options, facts, BenchmarkJob::standardSet(), progress, [&cancelled] { return cancelled.load(); },
            machine.now());
        if (!outcome.run->results.empty()) {
            JSONHistory<BenchmarkRun> history(BenchmarkRun::historyFile(machine.dataFolder()),
                                              BenchmarkRun::historyLimit);
            try {
                history.append(*outcome.run);
            } catch (const FileError& problem) {
                outcome.saveProblem = problem.what();
            }
        }
    } catch (const BenchmarkError& error) {
        outcome.error = "cannot measure " + error.description();
    } catch (const std::exception& error) {
        outcome.error = error.what();
    }
    return outcome;
}

}  // namespace

PerformanceModel::PerformanceModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    poller_.setInterval(200);
    connect(&poller_, &QTimer::timeout, this, &PerformanceModel::progressChanged);
    folder_ = session_.machine().home();
    reloadHistory();
}

PerformanceModel::~PerformanceModel() {
    cancel();
}

void PerformanceModel::setFolder(const std::string& folder) {
    if (folder_ == folder) return;
    folder_ = folder;
    Q_EMIT changed();
}

std::optional<std::string> PerformanceModel::startRefusal() const {
    if (session_.machine().isRecorded())
        return "The benchmark measures this machine's disks; it cannot run on a recorded machine.";
    if (running_) return "A benchmark is running.";
    return consentRefusal(session_.machine(), ConsentScope::benchmark);
}

void PerformanceModel::start() {
    if (startRefusal()) return;
    running_ = std::make_shared<BenchmarkProgress>();
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    error_.clear();
    Q_EMIT changed();
    poller_.start();
    session_.run(
        this,
        [&machine = session_.machine(), folder = folder_, progress = running_, cancelled = cancelled_] {
            return measure(machine, folder, *progress, *cancelled);
        },
        [this](Outcome outcome) {
            poller_.stop();
            running_.reset();
            if (outcome.run) run_ = std::move(outcome.run);
            error_ = outcome.saveProblem ? "Could not save the result: " + *outcome.saveProblem : outcome.error;
            reloadHistory();
        });
}

void PerformanceModel::cancel() {
    if (cancelled_) cancelled_->store(true);
}

QString PerformanceModel::progressText() const {
    if (!running_) return {};
    const int index = running_->jobIndex.load();
    if (index < 0) {
        const auto total = std::max<std::int64_t>(1, running_->fileBytes.load());
        return QStringLiteral("Writing the %1 test file: %2%")
            .arg(QString::fromStdString(ByteFormat::string(total)))
            .arg(running_->preparedBytes.load() * 100 / total);
    }
    const auto jobs = BenchmarkJob::standardSet();
    const auto name =
        static_cast<std::size_t>(index) < jobs.size() ? jobs[static_cast<std::size_t>(index)].name() : std::string();
    return QStringLiteral("%1 (%2 of %3)")
        .arg(QString::fromStdString(name))
        .arg(index + 1)
        .arg(running_->jobCount.load());
}

void PerformanceModel::reloadHistory() {
    JSONHistory<BenchmarkRun> history(BenchmarkRun::historyFile(session_.machine().dataFolder()),
                                      BenchmarkRun::historyLimit);
    history_ = history.all();
    std::reverse(history_.begin(), history_.end());
    if (const auto problem = history.loadProblem()) error_ = *problem;
    Q_EMIT changed();
}

}  // namespace corvel::desktop
