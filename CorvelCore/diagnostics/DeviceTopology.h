// One physical disk's connection path from the machine to the drive (controllers, hubs,
// bridges), with the link-speed findings the topology inspection raised for it. The topology
// readers (topology/) build these; the health view reads their findings and whether each disk's
// path was inspected at all.
//
//   DeviceTopology topology{.diskID = "disk4", .path = {{"USB 3.2 Gen 2 port", "port", 10'000'000'000, {}}}};
//   topology.linkEvidence() == {"USB 3.2 Gen 2 port: 10 Gb/s"}
#pragma once

#include "common/Json.h"
#include "diagnostics/Finding.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel {

// One hop on the way to a disk.
struct TopologyNode {
    std::string label;                                    // shown to people: "Thunderbolt 4 port", "ASM2362 bridge"
    std::string kind;                                     // "controller", "port", "hub", "bridge", "disk"
    std::optional<std::int64_t> linkBitsPerSecond;        // negotiated speed of the link into this node, when known
    std::vector<std::string> qualifiers;                  // notes on the link: "bottleneck", "shared with 2 devices"
    std::optional<std::int64_t> capabilityBitsPerSecond;  // the fastest link this node supports, when known

    bool operator==(const TopologyNode&) const = default;
};

struct DeviceTopology {
    std::string diskID;
    std::vector<TopologyNode> path;      // from the machine to the disk
    std::vector<TopologyNode> branches;  // other devices hanging off the same path (sharing its bandwidth)
    std::vector<Finding> findings;       // rule ids begin with "topology."
    std::optional<std::int64_t> effectiveLinkBitsPerSecond;
    std::optional<std::string> transport;  // a LinkTransport raw value: "usb", "pcie", "fabric", …

    // One line per inspected link on the path: label + ": " + speed, then the link's qualifiers.
    std::vector<std::string> linkEvidence() const;

    // The disk was located on a known transport and, where that transport negotiates a link, the
    // speed it runs at is known. Only then can "no finding" mean "the link is fine".
    bool isInspected() const;

    bool operator==(const DeviceTopology&) const = default;
};

// Decimal bit rates as hardware names them: "480 Mb/s", "10 Gb/s", "2.5 Gb/s", "12 Mb/s".
std::string linkSpeedText(std::int64_t bitsPerSecond);

void to_json(Json& j, const TopologyNode& node);
void from_json(const Json& j, TopologyNode& node);
void to_json(Json& j, const DeviceTopology& topology);
void from_json(const Json& j, DeviceTopology& topology);

}  // namespace corvel
