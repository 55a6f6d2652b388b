#include "shell/StorageScreens.h"

#include "cleanup/CleanupModel.h"
#include "cleanup/CleanupView.h"
#include "common/Text.h"
#include "dashboard/DashboardModel.h"
#include "details/DetailsModel.h"
#include "details/DetailsView.h"
#include "developer/DeveloperModel.h"
#include "developer/DeveloperView.h"
#include "hardware/HardwareModel.h"
#include "hardware/HardwareView.h"
#include "monitoring/MonitoringModel.h"
#include "monitoring/MonitoringView.h"
#include "topology/TopologyModel.h"
#include "topology/TopologyView.h"
#include "widgets/ScreenParts.h"

namespace corvel::desktop {

StorageScreens::StorageScreens(CoreSession& session, DashboardModel& dashboard, Window window, QObject* parent)
    : QObject(parent),
      session_(session),
      dashboard_(dashboard),
      window_(std::move(window)),
      developer_(new DeveloperModel(session, this)),
      cleanup_(new CleanupModel(session, this)),
      monitoring_(new MonitoringModel(session, this)),
      topology_(new TopologyModel(session, this)),
      hardware_(new HardwareModel(session, this)),
      details_(new DetailsModel(dashboard, this)),
      developerView_(new DeveloperView(*developer_)),
      cleanupView_(new CleanupView(*cleanup_)),
      monitoringView_(new MonitoringView(*monitoring_)),
      topologyView_(new TopologyView(*topology_)),
      detailsView_(new DetailsView(*details_)) {
    window_.addScreen(QStringLiteral("Developer storage"), developerView_);
    window_.addScreen(QStringLiteral("Cleanup"), cleanupView_);
    window_.addScreen(QStringLiteral("Monitoring"), monitoringView_);
    window_.addScreen(QStringLiteral("Topology"), topologyView_);
    window_.addScreen(QStringLiteral("This Mac"), new HardwareView(*hardware_));
    window_.addScreen(QStringLiteral("Details"), detailsView_);
    developer_->start();
    cleanup_->loadHistory();
}

void StorageScreens::refreshed() {
    const auto& snapshot = dashboard_.snapshot();
    topology_->load(snapshot);
    hardware_->load(snapshot);
    monitoring_->load();
    // The details show the first disk until someone chooses.
    if (!details_->subject() && !snapshot.disks.empty()) details_->showDisk(snapshot.disks.front().id);
}

void StorageScreens::simulateCleanup(std::vector<std::string> paths) {
    cleanup_->simulate(std::move(paths));
    showCleanup();
}

void StorageScreens::showDisk(const std::string& id) {
    details_->showDisk(id);
    window_.showScreen(detailsView_);
}

void StorageScreens::showVolume(const std::string& id) {
    details_->showVolume(id);
    window_.showScreen(detailsView_);
}

void StorageScreens::showTopology() {
    window_.showScreen(topologyView_);
}

void StorageScreens::showCleanup() {
    window_.showScreen(cleanupView_);
}

bool StorageScreens::isReady() const {
    return developer_->state() != DeveloperModel::State::measuring &&
           cleanup_->state() != CleanupModel::State::simulating && monitoring_->isLoaded() && !topology_->isLoading() &&
           topology_->isLoaded() && hardware_->isLoaded() && !hardware_->isLoading();
}

std::vector<PaletteEntry> StorageScreens::paletteEntries() {
    std::vector<PaletteEntry> entries;
    const auto& snapshot = dashboard_.snapshot();
    for (const auto& disk : snapshot.disks)
        entries.push_back({QStringLiteral("Disk"), ScreenParts::text(disk.displayName() + " (" + disk.id + ")"),
                           [this, id = disk.id] { showDisk(id); }});
    for (const auto& volume : snapshot.volumes)
        entries.push_back({QStringLiteral("Volume"), ScreenParts::text(volume.name + " (" + volume.mountPoint + ")"),
                           [this, id = volume.id] { showVolume(id); }});
    entries.push_back({QStringLiteral("Action"), QStringLiteral("Measure developer storage again"), [this] {
                           developer_->start();
                           window_.showScreen(developerView_);
                       }});
    entries.push_back({QStringLiteral("Action"), QStringLiteral("Turn the agent on"), [this] {
                           monitoring_->setAgentEnabled(true);
                           window_.showScreen(monitoringView_);
                       }});
    entries.push_back({QStringLiteral("Action"), QStringLiteral("Turn the agent off"), [this] {
                           monitoring_->setAgentEnabled(false);
                           window_.showScreen(monitoringView_);
                       }});
    return entries;
}

}  // namespace corvel::desktop
