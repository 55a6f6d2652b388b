// The migration screen's state: the projects found under the project roots (as `velmora projects`
// finds them, with their sizes), a plan to
// move one of them to another volume (the core's facts and planner, as `velmora migrate plan`),
// and a verification of a copy against its original by content. Both run on a pool thread with
// polled progress and Cancel; nothing is moved, copied or deleted.
//
//   model.loadProjects();
//   model.plan("/home/me/src/app", "/mnt/work");      // finished() when done
//   model.verify("/home/me/src/app", "/mnt/work/app");
#pragma once

#include "migration/MigrationPlan.h"
#include "migration/MigrationProgress.h"
#include "migration/Project.h"
#include "migration/TreeDifference.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class MigrationModel : public QObject {
    Q_OBJECT
public:
    enum class Work { none, planning, verifying };

    explicit MigrationModel(CoreSession& session, QObject* parent = nullptr);
    ~MigrationModel() override;

    // Looks for projects under the settings' project roots and the usual folders of the home
    // folder (nothing on a recorded machine, which holds no file tree), largest first.
    void loadProjects();
    const std::vector<Project>& projects() const { return projects_; }
    bool loadingProjects() const { return loadingProjects_; }

    // Both refuse (error()) a path that is not an existing folder, and do nothing while work runs.
    void plan(const std::string& workspace, const std::string& target);
    void verify(const std::string& source, const std::string& copy);
    void cancel();

    Work work() const { return work_; }
    const MigrationProgress::Snapshot& progress() const { return progress_; }
    const std::optional<MigrationPlan>& lastPlan() const { return plan_; }
    const std::optional<TreeComparison>& lastComparison() const { return comparison_; }
    bool wasCancelled() const { return cancelledResult_; }
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void changed();
    void progressChanged();

private:
    template <class Run, class Done>
    void start(Work work, Run run, Done done);
    void poll();

    CoreSession& session_;
    std::vector<Project> projects_;
    bool loadingProjects_ = false;
    std::shared_ptr<std::atomic<bool>> projectSearchCancelled_ = std::make_shared<std::atomic<bool>>(false);
    Work work_ = Work::none;
    std::shared_ptr<MigrationProgress> running_;
    std::shared_ptr<std::atomic<bool>> cancelled_;
    MigrationProgress::Snapshot progress_;
    std::optional<MigrationPlan> plan_;
    std::optional<TreeComparison> comparison_;
    bool cancelledResult_ = false;
    std::string error_;
    QTimer poller_;
};

}  // namespace corvel::desktop
