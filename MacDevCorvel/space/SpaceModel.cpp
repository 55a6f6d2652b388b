#include "space/SpaceModel.h"

#include "shell/CoreSession.h"
#include "space/ScanReporting.h"
#include "space/SpaceScanner.h"
#include "space/SpaceTreeBuilder.h"

namespace corvel::desktop {
namespace {

// Deep and wide enough to zoom into a few levels; the rest of a folder is one aggregate tile.
constexpr SpaceTreeOptions treeOptions{.maxDepth = 5, .maxChildren = 30, .minimumShare = 0.002};

struct ScanOutcome {
    SpaceNode root;
    std::optional<SpaceScanReport> report;
    std::string error;
};

ScanOutcome scanFolder(Machine& machine, const std::string& folder, ScanProgress& progress,
                       const std::atomic<bool>& cancelled) {
    ScanOutcome outcome;
    try {
        const ScanTree tree = SpaceScanner::scan(folder, {}, progress, [&cancelled] { return cancelled.load(); });
        const auto catalog = machine.catalog();
        const auto report = ScanReporting::report(tree, catalog);
        SpaceTreeBuilder builder;
        ScanReporting::emit(tree, catalog, treeOptions, report, builder);
        outcome.root = builder.root();
        outcome.report = report;
    } catch (const std::exception& error) {
        outcome.error = error.what();
    }
    progress.markFinished();
    return outcome;
}

}  // namespace

SpaceModel::SpaceModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    // gdu's habit: progress is a value the walker updates and we look at when we like.
    poller_.setInterval(100);
    connect(&poller_, &QTimer::timeout, this, &SpaceModel::poll);
}

SpaceModel::~SpaceModel() {
    cancel();
}

void SpaceModel::setFolder(const std::string& folder) {
    if (folder_ == folder) return;
    folder_ = folder;
    Q_EMIT stateChanged();
}

void SpaceModel::start() {
    if (state_ == State::scanning) return;
    running_ = std::make_shared<ScanProgress>();
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    progress_ = {};
    error_.clear();
    state_ = State::scanning;
    Q_EMIT stateChanged();
    poller_.start();
    session_.run(
        this,
        [&machine = session_.machine(), folder = folder_, progress = running_, cancelled = cancelled_] {
            return scanFolder(machine, folder, *progress, *cancelled);
        },
        [this](ScanOutcome outcome) {
            poller_.stop();
            poll();
            root_ = std::move(outcome.root);
            report_ = std::move(outcome.report);
            error_ = std::move(outcome.error);
            if (!error_.empty())
                state_ = State::failed;
            else
                state_ = report_ && report_->wasCancelled ? State::cancelled : State::finished;
            Q_EMIT stateChanged();
        });
}

void SpaceModel::cancel() {
    if (cancelled_) cancelled_->store(true);
}

void SpaceModel::poll() {
    if (!running_) return;
    auto now = running_->snapshot();
    if (now == progress_) return;
    progress_ = std::move(now);
    Q_EMIT progressChanged();
}

}  // namespace corvel::desktop
