#include "shell/Screenshots.h"

#include "dashboard/DashboardModel.h"
#include "shell/MainWindow.h"
#include "shell/Refresher.h"
#include "shell/StorageScreens.h"
#include "shell/ToolScreens.h"
#include "space/SpaceModel.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <memory>

namespace corvel::desktop::Screenshots {

QStringList writeAll(MainWindow& window, const QString& folder) {
    QStringList written;
    if (!QDir().mkpath(folder)) return written;
    const int shown = window.currentScreen();
    const auto names = window.screenNames();
    for (int i = 0; i < names.size(); ++i) {
        window.showScreen(i);
        QApplication::processEvents();
        const QString path = QDir(folder).filePath(
            QStringLiteral("%1-%2.png").arg(i + 1).arg(names[i].toLower().replace(QLatin1Char(' '), QLatin1Char('-'))));
        if (window.grab().save(path)) written << path;
    }
    window.showScreen(shown);
    return written;
}

void whenReady(MainWindow& window, const QString& folder, std::function<void(QStringList)> done) {
    // Polled rather than chained on signals: the refresh and the scan finish in either order.
    auto* timer = new QTimer(&window);
    timer->setInterval(50);
    QObject::connect(timer, &QTimer::timeout, &window, [&window, folder, done, timer] {
        const bool refreshed =
            window.dashboard().isLoaded() && !window.refresher().isRunning() && !window.tools().isBusy();
        const bool scanned = window.space().state() != SpaceModel::State::scanning;
        if (!refreshed || !scanned || !window.storage().isReady()) return;
        timer->stop();
        timer->deleteLater();
        done(writeAll(window, folder));
    });
    timer->start();
}

}  // namespace corvel::desktop::Screenshots
