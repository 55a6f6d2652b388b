#include "topology/TopologyModel.h"

#include "machine/MachineTopology.h"
#include "shell/CoreSession.h"

namespace corvel::desktop {

TopologyModel::TopologyModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {}

void TopologyModel::load(const StorageSnapshot& snapshot) {
    loading_ = true;
    session_.run(
        this, [&machine = session_.machine(), snapshot] { return MachineTopology::read(machine, snapshot); },
        [this, snapshot](TopologyReading reading) {
            snapshot_ = snapshot;
            reading_ = std::move(reading);
            loaded_ = true;
            loading_ = false;
            Q_EMIT changed();
        });
}

std::string TopologyModel::diskName(const std::string& diskID) const {
    const auto disk = snapshot_.disk(diskID);
    return disk ? disk->displayName() : diskID;
}

}  // namespace corvel::desktop
