#include "tray/TrayModel.h"

#include "agent/AgentRecords.h"
#include "common/JSONHistory.h"
#include "dashboard/DashboardModel.h"
#include "widgets/ScreenParts.h"
#include "widgets/ToolParts.h"

#include <algorithm>

namespace corvel::desktop {

TrayModel::TrayModel(DashboardModel& dashboard, Machine& machine, QObject* parent)
    : QObject(parent), dashboard_(dashboard), machine_(machine) {
    connect(&dashboard_, &DashboardModel::changed, this, &TrayModel::reloadAlerts);
    reloadAlerts();
}

bool TrayModel::isLoaded() const {
    return dashboard_.isLoaded();
}

Severity TrayModel::severity() const {
    return dashboard_.isLoaded() ? dashboard_.overall().severity : Severity::ok;
}

QStringList TrayModel::volumeLines() const {
    QStringList lines;
    for (const auto& volume : dashboard_.snapshot().volumes)
        lines << QStringLiteral("%1 — %2 free of %3")
                     .arg(ScreenParts::text(volume.name.empty() ? volume.mountPoint : volume.name),
                          ToolParts::bytes(volume.availableBytes), ToolParts::bytes(volume.totalBytes));
    return lines;
}

QStringList TrayModel::alertLines() const {
    QStringList lines;
    for (const auto& alert : alerts_)
        lines << QStringLiteral("%1 · %2: %3")
                     .arg(ToolParts::date(alert.timestamp), ScreenParts::text(alert.subjectName),
                          ScreenParts::text(alert.title));
    return lines;
}

QString TrayModel::toolTip() const {
    if (!dashboard_.isLoaded()) return QStringLiteral("Velmora: reading the machine…");
    QString tip = QStringLiteral("Velmora: ") + ScreenParts::text(label(severity()));
    const auto& volumes = dashboard_.snapshot().volumes;
    const auto tightest = std::min_element(volumes.begin(), volumes.end(), [](const auto& a, const auto& b) {
        return a.availableBytes < b.availableBytes;
    });
    if (tightest != volumes.end())
        tip += QStringLiteral(" · least room: %1 (%2 free)")
                   .arg(ScreenParts::text(tightest->name), ToolParts::bytes(tightest->availableBytes));
    return tip;
}

void TrayModel::reloadAlerts() {
    // The agent keeps the events; reading them here never writes the file.
    JSONHistory<MonitorEvent> events(AgentFiles(machine_.dataFolder()).events(), AgentFiles::eventLimit);
    alerts_.clear();
    const auto all = events.all();
    for (auto it = all.rbegin(); it != all.rend() && alerts_.size() < alertCount; ++it)
        if (it->kind == MonitorEventKind::alert) alerts_.push_back(*it);
    Q_EMIT changed();
}

}  // namespace corvel::desktop
