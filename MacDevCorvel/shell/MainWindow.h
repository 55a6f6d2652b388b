// The application window: a sidebar of screens beside the screen shown, a Refresh button, and
// the line saying which machine is shown and when it was read. It owns one model per screen and
// the refresher that feeds them; every screen's view only reads its model.
//
//   CoreSession session(Machine::open(options));
//   MainWindow window(session);
//   window.show();
//   window.refresher().refresh();
#pragma once

#include "insights/Insight.h"

#include <QMainWindow>
#include <QString>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;
class QStackedWidget;

namespace corvel::desktop {

class CoreSession;
class DashboardModel;
class DiagnosticsModel;
class Refresher;
class SpaceModel;
class StorageScreens;
class CommandPalette;
class ToolScreens;

class MainWindow : public QMainWindow {
public:
    explicit MainWindow(CoreSession& session, QWidget* parent = nullptr);

    DashboardModel& dashboard() { return *dashboard_; }
    DiagnosticsModel& diagnostics() { return *diagnostics_; }
    SpaceModel& space() { return *space_; }
    Refresher& refresher() { return *refresher_; }
    // The screens after Space, and the command palette (Ctrl+K).
    StorageScreens& storage() { return *storage_; }
    CommandPalette& commandPalette() { return *palette_; }
    void openPalette();
    ToolScreens& tools() { return *tools_; }

    // The screens in sidebar order, by the names the sidebar shows.
    QStringList screenNames() const;
    void showScreen(int index);
    int currentScreen() const;
    QWidget* screen(int index) const;
    QListWidget* sidebar() const { return sidebar_; }

private:
    void addScreen(const QString& name, QWidget* view);
    // The screen that deals with an insight's destination; -1 when this version has none.
    int screenFor(Insight::Destination destination) const;
    void refreshed();

    CoreSession& session_;
    DashboardModel* dashboard_;
    DiagnosticsModel* diagnostics_;
    SpaceModel* space_;
    Refresher* refresher_;
    StorageScreens* storage_ = nullptr;
    CommandPalette* palette_ = nullptr;
    ToolScreens* tools_;
    QListWidget* sidebar_;
    QStackedWidget* stack_;
    QPushButton* refresh_;
    QLabel* source_;
};

}  // namespace corvel::desktop
