// One free-space measurement of one volume at one instant: the unit of the volume history.
//
//   VolumeSample sample = VolumeSample::of(volume, snapshot.capturedAt);
//   history.record({sample}, now);
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "storage/StorageVolume.h"

#include <cstdint>
#include <string>

namespace corvel {

struct VolumeSample {
    std::string volumeID;  // StorageVolume::id
    std::string volumeName;
    TimePoint timestamp{};
    std::int64_t totalBytes = 0;
    std::int64_t availableBytes = 0;

    static VolumeSample of(const StorageVolume& volume, TimePoint at) {
        return {volume.id, volume.name, at, volume.totalBytes, volume.availableBytes};
    }

    bool operator==(const VolumeSample&) const = default;
};

CORVEL_JSON_RECORD(VolumeSample, volumeID, volumeName, timestamp, totalBytes, availableBytes)

}  // namespace corvel
