// The topology screen's state: each physical disk's path from the machine to the drive with the
// link speed at every hop and the link findings, as the core reads it for the snapshot of the
// last refresh (the same reading `velmora topology` prints), on a background thread.
//
//   TopologyModel model(session);
//   model.load(refresh.snapshot);        // changed when read
//   for (const auto& topology : model.reading().topologies) ...
#pragma once

#include "storage/StorageSnapshot.h"
#include "topology/TopologyReading.h"

#include <QObject>

namespace corvel::desktop {

class CoreSession;

class TopologyModel : public QObject {
    Q_OBJECT
public:
    explicit TopologyModel(CoreSession& session, QObject* parent = nullptr);

    void load(const StorageSnapshot& snapshot);

    bool isLoaded() const { return loaded_; }
    bool isLoading() const { return loading_; }
    const StorageSnapshot& snapshot() const { return snapshot_; }
    const TopologyReading& reading() const { return reading_; }
    // The disk's name as people know it, its id when the snapshot does not know it.
    std::string diskName(const std::string& diskID) const;

Q_SIGNALS:
    void changed();

private:
    CoreSession& session_;
    StorageSnapshot snapshot_;
    TopologyReading reading_;
    bool loaded_ = false;
    bool loading_ = false;
};

}  // namespace corvel::desktop
