#include "platform/macos/FileManagerVolumeProvider.h"
#include "storage/PlatformStorage.h"
#include "storage/StorageDiscovery.h"

namespace corvel::PlatformStorage {

StorageSnapshot discover(CommandRunning& runner, TimePoint now) {
    FileManagerVolumeProvider volumes;
    return StorageDiscovery(runner, volumes).snapshot(now);
}

std::unique_ptr<MountTableReading> mountTable() {
    return nullptr;
}

}  // namespace corvel::PlatformStorage
