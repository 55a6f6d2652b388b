#include "migration/MigrationModel.h"

#include "common/PathText.h"
#include "machine/MigrationReading.h"
#include "machine/ProjectReading.h"
#include "migration/MigrationPlanner.h"
#include "migration/TreeVerifier.h"
#include "shell/CoreSession.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace corvel::desktop {
namespace {

// A typed path made absolute and normal, or the one line saying it is no folder.
std::optional<std::string> existingFolder(const std::string& typed, const char* role, std::string& error) {
    const auto path = normalPath(typed, std::filesystem::current_path().string());
    std::error_code problem;
    if (typed.empty() || !std::filesystem::is_directory(path, problem)) {
        error = std::string(role) + " is not an existing folder: " + (typed.empty() ? "(none chosen)" : typed);
        return std::nullopt;
    }
    return path;
}

// Every project of the listing, largest first: the ones worth moving come to the top.
std::vector<Project> largestFirst(ProjectListing listing) {
    std::vector<Project> projects;
    for (auto& workspace : listing.workspaces)
        std::move(workspace.projects.begin(), workspace.projects.end(), std::back_inserter(projects));
    std::stable_sort(projects.begin(), projects.end(),
                     [](const Project& a, const Project& b) { return a.allocatedBytes > b.allocatedBytes; });
    return projects;
}

template <class Result>
struct Finished {
    Result result;
    std::string error;
};

}  // namespace

MigrationModel::MigrationModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {
    poller_.setInterval(100);
    connect(&poller_, &QTimer::timeout, this, &MigrationModel::poll);
}

MigrationModel::~MigrationModel() {
    projectSearchCancelled_->store(true);
    cancel();
}

void MigrationModel::loadProjects() {
    if (loadingProjects_) return;
    loadingProjects_ = true;
    Q_EMIT changed();
    session_.run(
        this,
        [&machine = session_.machine(), cancelled = projectSearchCancelled_] {
            ScanProgress progress;
            return largestFirst(projectListing(machine, defaultProjectRoots(machine), {}, progress,
                                               [cancelled] { return cancelled->load(); }));
        },
        [this](std::vector<Project> projects) {
            projects_ = std::move(projects);
            loadingProjects_ = false;
            Q_EMIT changed();
        });
}

template <class Run, class Done>
void MigrationModel::start(Work work, Run run, Done done) {
    running_ = std::make_shared<MigrationProgress>();
    cancelled_ = std::make_shared<std::atomic<bool>>(false);
    progress_ = {};
    work_ = work;
    Q_EMIT changed();
    poller_.start();
    session_.run(
        this,
        [&machine = session_.machine(), progress = running_, cancelled = cancelled_, run] {
            using Result = decltype(run(machine, *progress, std::function<bool()>()));
            Finished<Result> finished;
            try {
                finished.result = run(machine, *progress, [cancelled] { return cancelled->load(); });
            } catch (const std::exception& error) {
                finished.error = error.what();
            }
            return finished;
        },
        [this, done](auto finished) {
            poller_.stop();
            poll();
            work_ = Work::none;
            error_ = finished.error;
            if (error_.empty()) done(std::move(finished.result));
            Q_EMIT changed();
        });
}

void MigrationModel::plan(const std::string& workspace, const std::string& target) {
    if (work_ != Work::none) return;
    error_.clear();
    const auto source = existingFolder(workspace, "the workspace", error_);
    const auto into = source ? existingFolder(target, "the target", error_) : std::nullopt;
    if (source && into)
        if (auto problem = MigrationPlanner::overlapProblem(*source, *into)) error_ = *problem;
    if (!error_.empty()) {
        Q_EMIT changed();
        return;
    }
    plan_.reset();
    start(
        Work::planning,
        [source = *source, into = *into](Machine& machine, MigrationProgress& progress,
                                         const std::function<bool()>& isCancelled) {
            auto facts = migrationFacts(machine, source, into, progress, isCancelled);
            return std::make_pair(isCancelled(), MigrationPlanner::plan(facts));
        },
        [this](std::pair<bool, MigrationPlan> result) {
            // An interrupted reading makes no plan worth reviewing.
            cancelledResult_ = result.first;
            if (!result.first) plan_ = std::move(result.second);
        });
}

void MigrationModel::verify(const std::string& source, const std::string& copy) {
    if (work_ != Work::none) return;
    error_.clear();
    const auto original = existingFolder(source, "the source", error_);
    const auto copied = original ? existingFolder(copy, "the copy", error_) : std::nullopt;
    if (original && copied && *original == *copied)
        error_ = "the source and the copy are the same folder: " + *original;
    if (!error_.empty()) {
        Q_EMIT changed();
        return;
    }
    comparison_.reset();
    start(
        Work::verifying,
        [original = *original, copied = *copied](Machine&, MigrationProgress& progress,
                                                 const std::function<bool()>& isCancelled) {
            return TreeVerifier::compare(original, copied, {}, progress, isCancelled);
        },
        [this](TreeComparison comparison) {
            cancelledResult_ = comparison.wasCancelled;
            comparison_ = std::move(comparison);
        });
}

void MigrationModel::cancel() {
    if (cancelled_) cancelled_->store(true);
}

void MigrationModel::poll() {
    if (!running_) return;
    auto now = running_->snapshot();
    if (now == progress_) return;
    progress_ = std::move(now);
    Q_EMIT progressChanged();
}

}  // namespace corvel::desktop
