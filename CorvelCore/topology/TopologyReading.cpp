#include "topology/TopologyReading.h"

#include "topology/TopologyAssembly.h"

namespace corvel {

TopologyReading TopologyReading::assemble(const std::vector<DiskPath>& paths, const std::vector<PhysicalDisk>& disks,
                                          std::vector<std::string> warnings) {
    TopologyReading reading;
    reading.warnings = std::move(warnings);
    for (const auto& disk : disks) {
        const DiskPath* found = nullptr;
        for (const auto& path : paths)
            if (path.diskID == disk.id) found = &path;
        reading.topologies.push_back(found && !found->hops.empty() ? TopologyAssembly::build(*found, disk)
                                                                   : TopologyAssembly::notLocated(disk));
    }
    return reading;
}

}  // namespace corvel
