#include "platform/linux/ProcMountTable.h"
#include "storage/BoundedMountTable.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/PlatformStorage.h"

namespace corvel::PlatformStorage {

StorageSnapshot discover(CommandRunning& runner, TimePoint now) {
    // The same limit the disk tools get: a mount that cannot say its size in that time is reported.
    BoundedMountTable mountTable(std::make_shared<ProcMountTable>(), std::chrono::seconds(20));
    return LinuxStorageDiscovery(runner, mountTable).snapshot(now);
}

std::unique_ptr<MountTableReading> mountTable() {
    return std::make_unique<ProcMountTable>();
}

}  // namespace corvel::PlatformStorage
