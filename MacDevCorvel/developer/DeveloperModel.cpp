#include "developer/DeveloperModel.h"

#include "common/CheckedArithmetic.h"
#include "shell/CoreSession.h"
#include "space/DirectorySizer.h"

#include <algorithm>
#include <mutex>

namespace corvel::desktop {

// What the measuring thread shares with the interface thread.
struct DeveloperModel::Running {
    ScanProgress progress;
    std::atomic<bool> cancelled{false};
    std::mutex mutex;
    std::string current;
};

DeveloperModel::DeveloperModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    poller_.setInterval(100);
    connect(&poller_, &QTimer::timeout, this, &DeveloperModel::poll);
}

DeveloperModel::~DeveloperModel() {
    cancel();
}

void DeveloperModel::start() {
    if (state_ == State::measuring) return;
    running_ = std::make_shared<Running>();
    progress_ = {};
    current_.clear();
    state_ = State::measuring;
    Q_EMIT stateChanged();
    poller_.start();
    auto& machine = session_.machine();
    session_.run(
        this,
        [locations = FootprintLocation::defaults(machine.home(), machine.platform()), now = machine.now(),
         running = running_] {
            // Locations not reached before Cancel are left out rather than shown as absent.
            std::vector<Row> rows;
            const auto cancelled = [&running] { return running->cancelled.load(); };
            for (const auto& location : locations) {
                if (cancelled()) break;
                {
                    std::lock_guard lock(running->mutex);
                    running->current = location.name;
                }
                rows.push_back({location, DirectorySizer::measure(location.path, now, running->progress, cancelled)});
            }
            return rows;
        },
        [this](std::vector<Row> rows) {
            poller_.stop();
            const bool cancelled =
                running_->cancelled.load() || std::any_of(rows.begin(), rows.end(), [](const Row& row) {
                    return row.measurement && row.measurement->wasCancelled;
                });
            rows_ = std::move(rows);
            current_.clear();
            state_ = cancelled ? State::cancelled : State::finished;
            Q_EMIT stateChanged();
        });
}

void DeveloperModel::cancel() {
    if (running_) running_->cancelled.store(true);
}

std::int64_t DeveloperModel::totalBytes() const {
    std::int64_t total = 0;
    for (const auto& row : rows_)
        if (row.measurement) total = checkedAdd(total, row.measurement->allocatedBytes);
    return total;
}

int DeveloperModel::presentCount() const {
    return static_cast<int>(std::count_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.measurement; }));
}

void DeveloperModel::poll() {
    if (!running_) return;
    auto now = running_->progress.snapshot();
    std::string current;
    {
        std::lock_guard lock(running_->mutex);
        current = running_->current;
    }
    if (now == progress_ && current == current_) return;
    progress_ = std::move(now);
    current_ = std::move(current);
    Q_EMIT progressChanged();
}

}  // namespace corvel::desktop
