#include "hardware/HardwareModel.h"

#include "machine/MachineHardware.h"
#include "shell/CoreSession.h"

namespace corvel::desktop {
namespace {

bool hasListing(const HardwareSummary& summary) {
    return summary.model || summary.modelIdentifier || summary.chip || summary.processorCount || summary.memoryBytes ||
           summary.battery || !summary.displays.empty() || !summary.usbDevices.empty();
}

}  // namespace

HardwareModel::HardwareModel(CoreSession& session, QObject* parent) : QObject(parent), session_(session) {}

void HardwareModel::load(const StorageSnapshot& snapshot) {
    loading_ = true;
    session_.run(
        this, [&machine = session_.machine(), snapshot] { return MachineHardware::read(machine, snapshot); },
        [this](HardwareSummary summary) {
            summary_ = std::move(summary);
            noListing_ = session_.machine().isRecorded() && !hasListing(summary_);
            loaded_ = true;
            loading_ = false;
            Q_EMIT changed();
        });
}

}  // namespace corvel::desktop
