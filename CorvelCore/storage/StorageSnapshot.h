// The one picture of the machine's storage that everything else reads: physical disks with their
// partitions and health, mounted volumes, and the problems met while taking the picture.
#pragma once

#include "common/ISO8601.h"
#include "common/Json.h"
#include "storage/PhysicalDisk.h"
#include "storage/StorageVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct LocalCapacity {
    std::int64_t total = 0;
    std::int64_t available = 0;
    bool operator==(const LocalCapacity&) const = default;
};

struct StorageSnapshot {
    TimePoint capturedAt{};
    std::vector<PhysicalDisk> disks;
    std::vector<StorageVolume> volumes;
    std::vector<std::string> warnings;

    // No discovery has run yet: the distant past and nothing in it.
    static const StorageSnapshot& empty();

    std::optional<StorageVolume> volume(const std::string& id) const;
    std::optional<PhysicalDisk> disk(const std::string& id) const;
    // Volumes carried by `disk`, in snapshot order; unassigned volumes are never included.
    std::vector<StorageVolume> volumesOn(const PhysicalDisk& disk) const;
    // Volumes with no carrying disk, or one that is not in `disks`.
    std::vector<StorageVolume> unassignedVolumes() const;
    // Capacity of local volumes with each APFS container counted once (its first-listed volume
    // speaks for it), because the volumes of one container share its free space.
    LocalCapacity distinctLocalCapacity() const;

    bool operator==(const StorageSnapshot&) const = default;
};

// Year 1 of the common era, the "distant past" that marks an empty snapshot.
TimePoint distantPast();

CORVEL_JSON_RECORD(StorageSnapshot, capturedAt, disks, volumes, warnings)

}  // namespace corvel
