// The developer storage screen's state: the folders where developer tools keep caches, SDKs and
// toolchains (the core's list for the machine's platform and home), each measured by the core on
// a background thread, with the progress polled and a Cancel. A location that does not exist
// stays in the list without a measurement, as `velmora dev` shows it.
//
//   DeveloperModel model(session);
//   model.start();                       // stateChanged when done, progressChanged meanwhile
//   for (const auto& row : model.rows()) show(row.location.name, row.measurement);
#pragma once

#include "space/DirectoryMeasurement.h"
#include "space/FootprintLocation.h"
#include "space/ScanProgress.h"

#include <QObject>
#include <QTimer>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace corvel::desktop {

class CoreSession;

class DeveloperModel : public QObject {
    Q_OBJECT
public:
    enum class State { idle, measuring, finished, cancelled };

    struct Row {
        FootprintLocation location;
        std::optional<DirectoryMeasurement> measurement;  // absent: not present on this machine

        bool operator==(const Row&) const = default;
    };

    explicit DeveloperModel(CoreSession& session, QObject* parent = nullptr);
    ~DeveloperModel() override;

    // Does nothing while a measurement runs.
    void start();
    void cancel();

    State state() const { return state_; }
    const std::vector<Row>& rows() const { return rows_; }
    const ScanProgress::Snapshot& progress() const { return progress_; }
    // The location being measured now, while measuring.
    const std::string& current() const { return current_; }
    std::int64_t totalBytes() const;
    int presentCount() const;

Q_SIGNALS:
    void stateChanged();
    void progressChanged();

private:
    struct Running;
    void poll();

    CoreSession& session_;
    State state_ = State::idle;
    std::vector<Row> rows_;
    std::shared_ptr<Running> running_;
    ScanProgress::Snapshot progress_;
    std::string current_;
    QTimer poller_;
};

}  // namespace corvel::desktop
