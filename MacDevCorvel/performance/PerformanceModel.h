// The performance screen's state: the storage benchmark of the volume holding a chosen folder,
// run by the core's engine on a pool thread with polled progress and Cancel, only with the
// benchmark consent and never on a recorded machine; and the earlier runs of the history.
//
//   model.setFolder("/mnt/fast");
//   if (!model.startRefusal()) model.start();      // finished: model.lastRun()
//   model.cancel();
#pragma once

#include "benchmark/BenchmarkEngine.h"
#include "benchmark/BenchmarkResult.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class PerformanceModel : public QObject {
    Q_OBJECT
public:
    // A quarter of the command line's default: the desktop offers a quick look.
    static constexpr std::int64_t fileBytes = std::int64_t{256} << 20;
    static constexpr double secondsPerJob = 3;

    explicit PerformanceModel(CoreSession& session, QObject* parent = nullptr);
    ~PerformanceModel() override;

    void setFolder(const std::string& folder);
    const std::string& folder() const { return folder_; }

    // Why start() would do nothing now: a recording, no consent, a run under way.
    std::optional<std::string> startRefusal() const;
    void start();
    void cancel();
    bool isRunning() const { return running_ != nullptr; }
    // "Writing the test file: 40%", "SEQ1M Q8 read (2 of 8)".
    QString progressText() const;

    const std::optional<BenchmarkRun>& lastRun() const { return run_; }
    const std::string& error() const { return error_; }
    // Newest first.
    const std::vector<BenchmarkRun>& history() const { return history_; }

Q_SIGNALS:
    void changed();
    void progressChanged();

private:
    void reloadHistory();

    CoreSession& session_;
    std::string folder_;
    std::shared_ptr<BenchmarkProgress> running_;
    std::shared_ptr<std::atomic<bool>> cancelled_;
    std::optional<BenchmarkRun> run_;
    std::vector<BenchmarkRun> history_;
    std::string error_;
    QTimer poller_;
};

}  // namespace corvel::desktop
