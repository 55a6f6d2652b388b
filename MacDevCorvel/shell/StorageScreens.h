// The screens that come after Space in the sidebar: developer storage, cleanup, monitoring,
// topology, this Mac and the disk and volume details, each a model and its view. The window
// hands over how to add a screen and how to show one; this keeps their models, feeds them after
// every refresh, and offers the disks, volumes and actions to the command palette.
//
//   auto* screens = new StorageScreens(session, dashboard, {add, show}, this);
//   screens->refreshed();        // after each refresh of the dashboard
//   screens->paletteEntries();   // "Disk", "Volume" and "Action" entries
#pragma once

#include "shell/CommandPalette.h"

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace corvel::desktop {

class CleanupModel;
class CoreSession;
class DashboardModel;
class DetailsModel;
class DeveloperModel;
class HardwareModel;
class MonitoringModel;
class TopologyModel;

class StorageScreens : public QObject {
public:
    struct Window {
        std::function<void(const QString& name, QWidget* view)> addScreen;
        std::function<void(QWidget* view)> showScreen;
    };

    StorageScreens(CoreSession& session, DashboardModel& dashboard, Window window, QObject* parent = nullptr);

    DeveloperModel& developer() { return *developer_; }
    CleanupModel& cleanup() { return *cleanup_; }
    MonitoringModel& monitoring() { return *monitoring_; }
    TopologyModel& topology() { return *topology_; }
    HardwareModel& hardware() { return *hardware_; }
    DetailsModel& details() { return *details_; }

    // Reads what depends on the dashboard's new snapshot (topology, hardware) and the agent's files.
    void refreshed();
    // Simulates removing `paths` and shows the cleanup screen.
    void simulateCleanup(std::vector<std::string> paths);
    void showDisk(const std::string& id);
    void showVolume(const std::string& id);
    void showTopology();
    void showCleanup();
    // True once every screen here holds its first values (screenshots wait for it).
    bool isReady() const;

    std::vector<PaletteEntry> paletteEntries();

private:
    CoreSession& session_;
    DashboardModel& dashboard_;
    Window window_;
    DeveloperModel* developer_;
    CleanupModel* cleanup_;
    MonitoringModel* monitoring_;
    TopologyModel* topology_;
    HardwareModel* hardware_;
    DetailsModel* details_;
    QWidget* developerView_;
    QWidget* cleanupView_;
    QWidget* monitoringView_;
    QWidget* topologyView_;
    QWidget* detailsView_;
};

}  // namespace corvel::desktop
