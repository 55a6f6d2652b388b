// The Docker screen's state: what the engine keeps on the machine, read by the core's Docker
// reading (the one `velmora docker` prints) on a pool thread after each refresh. Read-only.
//
//   model.setSnapshot(refresh.snapshot);
//   if (model.reading() && model.reading()->inventory) show(model.reading()->inventory->projectUsage());
#pragma once

#include "machine/DockerReading.h"

#include <QObject>
#include <optional>

namespace corvel::desktop {

class CoreSession;

class DockerModel : public QObject {
    Q_OBJECT
public:
    explicit DockerModel(CoreSession& session, QObject* parent = nullptr);

    void setSnapshot(StorageSnapshot snapshot);
    bool isBusy() const { return busy_; }
    // Absent until the first reading.
    const std::optional<DockerReading>& reading() const { return reading_; }
    // A malformed recording: the reading could not be made at all.
    const std::string& error() const { return error_; }

Q_SIGNALS:
    void changed();

private:
    CoreSession& session_;
    std::optional<DockerReading> reading_;
    std::string error_;
    bool busy_ = false;
};

}  // namespace corvel::desktop
