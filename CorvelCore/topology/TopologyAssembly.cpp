#include "topology/TopologyAssembly.h"

#include "topology/TopologyRules.h"

#include <algorithm>

namespace corvel::TopologyAssembly {

std::optional<std::int64_t> effectiveSpeed(const DiskPath& path) {
    if (path.hops.empty() || !path.hops.back().node.linkBitsPerSecond) return std::nullopt;
    std::int64_t slowest = *path.hops.back().node.linkBitsPerSecond;
    for (const auto& hop : path.hops)
        if (hop.node.linkBitsPerSecond) slowest = std::min(slowest, *hop.node.linkBitsPerSecond);
    return slowest;
}

DeviceTopology build(const DiskPath& path, const PhysicalDisk& disk) {
    DeviceTopology topology;
    topology.diskID = disk.id;
    for (const auto& hop : path.hops) topology.path.push_back(hop.node);
    topology.branches = path.branches;
    topology.findings = TopologyRules::evaluate(path, disk);
    topology.effectiveLinkBitsPerSecond = effectiveSpeed(path);
    if (path.transport) topology.transport = std::string(rawValue(*path.transport));
    return topology;
}

DeviceTopology notLocated(const PhysicalDisk& disk) {
    DeviceTopology topology;
    topology.diskID = disk.id;
    return topology;
}

std::string linkText(const DeviceTopology& topology, std::size_t hop) {
    if (hop >= topology.path.size()) return "";
    const auto& node = topology.path[hop];
    if (node.linkBitsPerSecond) return linkSpeedText(*node.linkBitsPerSecond);
    if (hop == 0) return "";
    const auto transport = topology.transport ? enumFromRaw<LinkTransport>(*topology.transport) : std::nullopt;
    if (transport && !hasNegotiatedLink(*transport)) return "";
    return "unknown";
}

std::string capabilityText(const TopologyNode& node) {
    if (!node.capabilityBitsPerSecond) return "";
    return "supports " + linkSpeedText(*node.capabilityBitsPerSecond);
}

}  // namespace corvel::TopologyAssembly
