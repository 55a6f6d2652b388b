// What the menu-bar item shows: the worst severity of the last refresh (its colour), each
// volume's free space, and the last alerts the agent recorded. Follows the dashboard's values;
// decides nothing the core has not.
//
//   TrayModel tray(dashboard, machine);
//   icon.setColour(Palette::tone(toneOf(tray.severity())));
//   for (const auto& line : tray.volumeLines()) menu.addAction(line);
#pragma once

#include "machine/Machine.h"
#include "monitoring/MonitorEvent.h"

#include <QObject>
#include <QStringList>
#include <vector>

namespace corvel::desktop {

class DashboardModel;

class TrayModel : public QObject {
    Q_OBJECT
public:
    static constexpr std::size_t alertCount = 5;

    TrayModel(DashboardModel& dashboard, Machine& machine, QObject* parent = nullptr);

    bool isLoaded() const;
    Severity severity() const;
    // "Backup — 120 GB free of 1 TB", in snapshot order.
    QStringList volumeLines() const;
    // The newest alerts first, at most alertCount.
    const std::vector<MonitorEvent>& alerts() const { return alerts_; }
    QStringList alertLines() const;
    // The one line beside the icon: the severity and the lowest free space.
    QString toolTip() const;

    void reloadAlerts();

Q_SIGNALS:
    void changed();

private:
    DashboardModel& dashboard_;
    Machine& machine_;
    std::vector<MonitorEvent> alerts_;
};

}  // namespace corvel::desktop
