// Turns what a reader found about one disk into its DeviceTopology: the nodes people see, the
// effective speed (the slowest known link on the way, when the disk's own link is known), the
// transport, and the findings of the link rules.
//
//   DeviceTopology topology = TopologyAssembly::build(path, disk);
//   TopologyAssembly::notLocated(disk)   // a disk no source could follow: no path, nothing judged
#pragma once

#include "diagnostics/DeviceTopology.h"
#include "storage/PhysicalDisk.h"
#include "topology/DiskPath.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::TopologyAssembly {

DeviceTopology build(const DiskPath& path, const PhysicalDisk& disk);

DeviceTopology notLocated(const PhysicalDisk& disk);

std::optional<std::int64_t> effectiveSpeed(const DiskPath& path);

// How a hop's negotiated link reads: its speed, "unknown" when a link exists but nobody reported
// its speed, and "" for the first node (nothing links into it) or on transports without a link.
std::string linkText(const DeviceTopology& topology, std::size_t hop);

// "supports 10 Gb/s", or "" when the capability is not known.
std::string capabilityText(const TopologyNode& node);

}  // namespace corvel::TopologyAssembly
