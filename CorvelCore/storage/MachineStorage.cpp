#include "storage/MachineStorage.h"

#include "storage/LinuxStorageDiscovery.h"
#include "storage/MountedVolumeRecord.h"
#include "storage/PlatformStorage.h"
#include "storage/RecordedMountTable.h"
#include "storage/StorageDiscovery.h"

namespace corvel::MachineStorage {

StorageSnapshot replay(CommandRunning& runner, const RecordedMachine& recording, TimePoint now) {
    if (recording.platform == Platform::linux) {
        RecordedMountTable mountTable(recording.document);
        return LinuxStorageDiscovery(runner, mountTable).snapshot(now);
    }
    FixedVolumeProvider volumes(recording.volumes);
    return StorageDiscovery(runner, volumes).snapshot(now);
}

StorageSnapshot snapshot(CommandRunning& runner, const RecordedMachine* recording, TimePoint now) {
    if (recording) return replay(runner, *recording, now);
    return PlatformStorage::discover(runner, now);
}

}  // namespace corvel::MachineStorage
