// The device topologies of a machine at one moment, with what got in the way of reading them.
// One topology per physical disk of the snapshot, in snapshot order; a disk no source could
// follow has an empty path (and so counts as not inspected).
//
//   TopologyReading reading = PlatformTopology::discover(runner, snapshot);
//   auto diagnosis = MachineDiagnosis::of(snapshot, settings, reading.topologies);
#pragma once

#include "common/Json.h"
#include "diagnostics/DeviceTopology.h"
#include "storage/PhysicalDisk.h"
#include "topology/DiskPath.h"

#include <string>
#include <vector>

namespace corvel {

struct TopologyReading {
    std::vector<DeviceTopology> topologies;
    std::vector<std::string> warnings;

    // Judges each disk's path; disks without a path (or with none found) become not located.
    static TopologyReading assemble(const std::vector<DiskPath>& paths, const std::vector<PhysicalDisk>& disks,
                                    std::vector<std::string> warnings);

    bool operator==(const TopologyReading&) const = default;
};

CORVEL_JSON_RECORD(TopologyReading, topologies, warnings)

}  // namespace corvel
