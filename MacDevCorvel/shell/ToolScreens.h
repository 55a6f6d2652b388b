// The screens that act or look further than the dashboard (disk operations, Docker, processes,
// migration, performance, settings, about) with their models, and the menu-bar item's model.
// They follow the refreshes: each new snapshot goes to the models that read from it.
//
//   ToolScreens tools(session, dashboard);
//   tools.addScreens([&](const QString& name, QWidget* view) { window.addScreen(name, view); });
#pragma once

#include <QObject>
#include <QString>
#include <functional>

class QWidget;

namespace corvel::desktop {

class AboutModel;
class ConsentModel;
class CoreSession;
class DashboardModel;
class DiskOpsModel;
class DockerModel;
class MigrationModel;
class PerformanceModel;
class ProcessesModel;
class TrayModel;

class ToolScreens : public QObject {
public:
    ToolScreens(CoreSession& session, DashboardModel& dashboard, QObject* parent = nullptr);

    void addScreens(const std::function<void(const QString& name, QWidget* view)>& add);

    DiskOpsModel& diskOps() { return *diskOps_; }
    DockerModel& docker() { return *docker_; }
    ProcessesModel& processes() { return *processes_; }
    MigrationModel& migration() { return *migration_; }
    PerformanceModel& performance() { return *performance_; }
    ConsentModel& consent() { return *consent_; }
    AboutModel& about() { return *about_; }
    TrayModel& tray() { return *tray_; }

    // Some model is still reading what the last refresh asked for.
    bool isBusy() const;

private:
    void refreshed();

    DashboardModel& dashboard_;
    DiskOpsModel* diskOps_;
    DockerModel* docker_;
    ProcessesModel* processes_;
    MigrationModel* migration_;
    PerformanceModel* performance_;
    ConsentModel* consent_;
    AboutModel* about_;
    TrayModel* tray_;
    bool first_ = true;
};

}  // namespace corvel::desktop
