#include "accounting/LocalSnapshotClient.h"

namespace corvel {

const CommandPolicy& LocalSnapshotClient::apfsPolicy() {
    static const CommandPolicy instance{diskutil, {{"apfs", "listSnapshots", "-plist"}}};
    return instance;
}

const CommandPolicy& LocalSnapshotClient::timeMachinePolicy() {
    static const CommandPolicy instance{tmutil, {{"listlocalsnapshots", "/"}}};
    return instance;
}

std::string LocalSnapshotClient::listAPFS(const std::string& volume) const {
    return apfsPolicy().run({"apfs", "listSnapshots", "-plist", volume}, runner);
}

std::string LocalSnapshotClient::listTimeMachine() const {
    return timeMachinePolicy().run({"listlocalsnapshots", "/"}, runner);
}

}  // namespace corvel
