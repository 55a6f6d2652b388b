// The space screen's state: the folder chosen, a scan of it running on a background thread with
// its progress polled ten times a second, and, once done, the classified folder tree and the scan
// report exactly as the core built them. Cancel stops the walk; what was measured stays shown.
//
//   SpaceModel model(session);
//   model.setFolder("/Users/me/dev");
//   model.start();                      // stateChanged / progressChanged follow
//   model.cancel();
#pragma once

#include "space/ScanProgress.h"
#include "space/SpaceNode.h"
#include "space/SpaceScanReport.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace corvel::desktop {

class CoreSession;

class SpaceModel : public QObject {
    Q_OBJECT
public:
    enum class State { idle, scanning, finished, cancelled, failed };

    explicit SpaceModel(CoreSession& session, QObject* parent = nullptr);
    // Stops a scan under way, so that closing the window never waits for a whole walk.
    ~SpaceModel() override;

    void setFolder(const std::string& folder);
    const std::string& folder() const { return folder_; }

    // Does nothing while a scan runs.
    void start();
    void cancel();

    State state() const { return state_; }
    const ScanProgress::Snapshot& progress() const { return progress_; }
    // The classified tree of the last scan (empty before one finished).
    const SpaceNode& root() const { return root_; }
    const std::optional<SpaceScanReport>& report() const { return report_; }
    // Why the last scan failed (the core's one line naming the folder).
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void stateChanged();
    void progressChanged();

private:
    void poll();

    CoreSession& session_;
    std::string folder_;
    State state_ = State::idle;
    std::shared_ptr<ScanProgress> running_;
    std::shared_ptr<std::atomic<bool>> cancelled_;
    ScanProgress::Snapshot progress_;
    SpaceNode root_;
    std::optional<SpaceScanReport> report_;
    std::string error_;
    QTimer poller_;
};

}  // namespace corvel::desktop
