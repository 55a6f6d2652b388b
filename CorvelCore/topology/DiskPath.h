// One disk's connection path as a topology reader found it, before it becomes a DeviceTopology:
// each hop keeps, besides the node people see, the typed facts the link rules judge (PCIe
// generation and lanes, the USB version a device declares, whether USB runs through a
// Thunderbolt tunnel). Readers fill these; TopologyAssembly turns them into the topology.
//
//   DiskPath path;
//   path.diskID = "sdb";
//   path.hops.push_back(TopologyHop::of({"USB 2.0 root hub", "port", 480'000'000, {}, 480'000'000},
//   LinkTransport::usb));
#pragma once

#include "diagnostics/DeviceTopology.h"
#include "diagnostics/LinkTransport.h"
#include "topology/PCIeLink.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel {

struct TopologyHop {
    TopologyNode node;
    std::optional<LinkTransport> bus;     // the technology of the link into this node
    std::optional<PCIeLink> pcieLink;     // negotiated
    std::optional<PCIeLink> pcieMaximum;  // what this device supports
    std::optional<int> usbVersion;        // the USB version the device declares (BCD, 0x0320)
    bool isTunnelled = false;             // USB carried through a USB4/Thunderbolt tunnel

    static TopologyHop of(TopologyNode node, std::optional<LinkTransport> bus = std::nullopt) {
        TopologyHop hop;
        hop.node = std::move(node);
        hop.bus = bus;
        return hop;
    }

    bool operator==(const TopologyHop&) const = default;
};

struct DiskPath {
    std::string diskID;
    std::vector<TopologyHop> hops;  // from the machine to the disk (the last hop); empty: not located
    std::vector<TopologyNode> branches;
    std::optional<LinkTransport> transport;

    bool operator==(const DiskPath&) const = default;
};

}  // namespace corvel
