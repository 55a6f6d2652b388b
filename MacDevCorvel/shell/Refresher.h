// Runs the core's refresh cycle for the application (the same cycle `velmora status` and the
// agent run) on a background thread, with the insights beside it, and hands the results to the
// screen models. One refresh at a time: asking again while one runs does nothing.
//
//   Refresher refresher(session, dashboard, diagnostics);
//   connect(&refresher, &Refresher::finished, ...);
//   refresher.refresh();
#pragma once

#include <QObject>
#include <QString>

namespace corvel::desktop {

class CoreSession;
class DashboardModel;
class DiagnosticsModel;

class Refresher : public QObject {
    Q_OBJECT
public:
    Refresher(CoreSession& session, DashboardModel& dashboard, DiagnosticsModel& diagnostics,
              QObject* parent = nullptr);

    void refresh();
    bool isRunning() const { return running_; }

Q_SIGNALS:
    void started();
    void finished();

private:
    CoreSession& session_;
    DashboardModel& dashboard_;
    DiagnosticsModel& diagnostics_;
    bool running_ = false;
};

}  // namespace corvel::desktop
