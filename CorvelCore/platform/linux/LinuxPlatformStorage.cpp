#include "platform/linux/ProcMountTable.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/PlatformStorage.h"

namespace corvel::PlatformStorage {

StorageSnapshot discover(CommandRunning& runner, TimePoint now) {
    ProcMountTable mountTable;
    return LinuxStorageDiscovery(runner, mountTable).snapshot(now);
}

}  // namespace corvel::PlatformStorage
