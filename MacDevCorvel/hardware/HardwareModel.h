// The "This Mac" screen's state: the hardware summary the core reads for the machine (model,
// chip, memory, battery, displays, USB devices, the internal disk's breakdown from the last
// scan), the same summary `velmora hardware` prints, read on a background thread.
//
//   HardwareModel model(session);
//   model.load(refresh.snapshot);        // changed when read
//   model.summary().model;
#pragma once

#include "hardware/HardwareSummary.h"
#include "storage/StorageSnapshot.h"

#include <QObject>

namespace corvel::desktop {

class CoreSession;

class HardwareModel : public QObject {
    Q_OBJECT
public:
    explicit HardwareModel(CoreSession& session, QObject* parent = nullptr);

    void load(const StorageSnapshot& snapshot);

    bool isLoaded() const { return loaded_; }
    bool isLoading() const { return loading_; }
    const HardwareSummary& summary() const { return summary_; }
    // A recorded machine whose recording has no hardware listing: there is nothing to show but
    // the internal disk's breakdown, and the failed reads are no news.
    bool recordingHoldsNoListing() const { return noListing_; }

Q_SIGNALS:
    void changed();

private:
    CoreSession& session_;
    HardwareSummary summary_;
    bool loaded_ = false;
    bool loading_ = false;
    bool noListing_ = false;
};

}  // namespace corvel::desktop
