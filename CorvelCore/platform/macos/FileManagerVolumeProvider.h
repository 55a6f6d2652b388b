// The mounted volumes of this Mac as the file manager lists them (hidden volumes skipped),
// with the resource values VolumeResourceValues::makeRecord turns into records.
#pragma once

#include "storage/MountedVolumeRecord.h"

namespace corvel {

class FileManagerVolumeProvider : public MountedVolumeProviding {
public:
    std::vector<MountedVolumeRecord> mountedVolumes() override;
};

}  // namespace corvel
