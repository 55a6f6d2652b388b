#include "shell/ToolScreens.h"

#include "about/AboutModel.h"
#include "about/AboutView.h"
#include "dashboard/DashboardModel.h"
#include "diskops/DiskOpsModel.h"
#include "diskops/DiskOpsView.h"
#include "docker/DockerModel.h"
#include "docker/DockerView.h"
#include "migration/MigrationModel.h"
#include "migration/MigrationView.h"
#include "performance/PerformanceModel.h"
#include "performance/PerformanceView.h"
#include "processes/ProcessesModel.h"
#include "processes/ProcessesView.h"
#include "settings/ConsentModel.h"
#include "settings/SettingsView.h"
#include "shell/CoreSession.h"
#include "tray/TrayModel.h"

namespace corvel::desktop {

ToolScreens::ToolScreens(CoreSession& session, DashboardModel& dashboard, QObject* parent)
    : QObject(parent),
      dashboard_(dashboard),
      diskOps_(new DiskOpsModel(session, this)),
      docker_(new DockerModel(session, this)),
      processes_(new ProcessesModel(session, this)),
      migration_(new MigrationModel(session, this)),
      performance_(new PerformanceModel(session, this)),
      consent_(new ConsentModel(session.machine(), this)),
      about_(new AboutModel(session, this)),
      tray_(new TrayModel(dashboard, session.machine(), this)) {
    connect(&dashboard_, &DashboardModel::changed, this, &ToolScreens::refreshed);
    // The gated screens ask the ledger each time; a change in Settings shows at once.
    for (QObject* gated : std::initializer_list<QObject*>{diskOps_, performance_, processes_})
        connect(consent_, &ConsentModel::changed, gated, [gated] { QMetaObject::invokeMethod(gated, "changed"); });
}

void ToolScreens::addScreens(const std::function<void(const QString&, QWidget*)>& add) {
    add(QStringLiteral("Disk Operations"), new DiskOpsView(*diskOps_));
    add(QStringLiteral("Docker"), new DockerView(*docker_));
    add(QStringLiteral("Processes"), new ProcessesView(*processes_));
    add(QStringLiteral("Migration"), new MigrationView(*migration_));
    add(QStringLiteral("Performance"), new PerformanceView(*performance_));
    add(QStringLiteral("Settings"), new SettingsView(*consent_));
    add(QStringLiteral("About"), new AboutView(*about_));
}

bool ToolScreens::isBusy() const {
    return first_ || !diskOps_->isLoaded() || docker_->isBusy() || processes_->isBusy();
}

void ToolScreens::refreshed() {
    diskOps_->setSnapshot(dashboard_.snapshot());
    docker_->setSnapshot(dashboard_.snapshot());
    if (first_) {
        first_ = false;
        migration_->loadProjects();
        processes_->load();
    }
}

}  // namespace corvel::desktop
