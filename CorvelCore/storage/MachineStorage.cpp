#include "storage/MachineStorage.h"

#include "storage/MountedVolumeRecord.h"
#include "storage/LinuxStorageDiscovery.h"
#include "storage/PlatformStorage.h"
#include "storage/RecordedMountTable.h"
#include "storage/StorageDiscovery.h"

namespace corvel::MachineStorage {

StorageSnapshot replay(CommandRunning& runner, const RecordedMachine& recording, TimePoint now) {
    if (recording.platform == "macos") {
        FixedVolumeProvider volumes(recording.volumes);
        return StorageDiscovery(runner, volumes).snapshot(now);
    }
    if (recording.platform == "linux") {
        RecordedMountTable mountTable(recording.document);
        return LinuxStorageDiscovery(runner, mountTable).snapshot(now);
    }
    StorageSnapshot snapshot;
    snapshot.capturedAt = now;
    snapshot.warnings.push_back("Unknown recorded platform \"" + recording.platform + "\"");
    return snapshot;
}

StorageSnapshot snapshot(CommandRunning& runner, const RecordedMachine* recording, TimePoint now) {
    if (recording) return replay(runner, *recording, now);
    return PlatformStorage::discover(runner, now);
}

}  // namespace corvel::MachineStorage
