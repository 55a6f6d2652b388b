#include "diagnostics/DeviceTopology.h"

#include "common/Text.h"
#include "diagnostics/LinkTransport.h"

#include <fmt/format.h>
#include <array>
#include <cmath>

namespace corvel {

std::string linkSpeedText(std::int64_t bitsPerSecond) {
    struct Unit {
        double size;
        const char* name;
    };
    static constexpr std::array<Unit, 3> units{{{1e9, "Gb/s"}, {1e6, "Mb/s"}, {1e3, "kb/s"}}};
    if (bitsPerSecond < 0) return "unknown speed";
    for (const auto& unit : units) {
        const double value = static_cast<double>(bitsPerSecond) / unit.size;
        if (value < 1.0) continue;
        // One decimal at most, and none when it is zero: "2.5 Gb/s", "10 Gb/s".
        const double tenths = std::round(value * 10.0) / 10.0;
        if (tenths == std::floor(tenths)) return fmt::format("{} {}", static_cast<long long>(tenths), unit.name);
        return fmt::format("{:.1f} {}", tenths, unit.name);
    }
    return fmt::format("{} b/s", bitsPerSecond);
}

std::vector<std::string> DeviceTopology::linkEvidence() const {
    std::vector<std::string> lines;
    for (const auto& node : path) {
        if (!node.linkBitsPerSecond) continue;
        std::string line = node.label + ": " + linkSpeedText(*node.linkBitsPerSecond);
        if (!node.qualifiers.empty()) line += ", " + join(node.qualifiers, ", ");
        lines.push_back(std::move(line));
    }
    return lines;
}

bool DeviceTopology::isInspected() const {
    if (path.empty() || !transport) return false;
    const auto known = enumFromRaw<LinkTransport>(*transport);
    if (!known) return false;
    return effectiveLinkBitsPerSecond.has_value() || !hasNegotiatedLink(*known);
}

void to_json(Json& j, const TopologyNode& node) {
    j = Json{{"label", node.label}, {"kind", node.kind}};
    putOptional(j, "linkBitsPerSecond", node.linkBitsPerSecond);
    j["qualifiers"] = node.qualifiers;
    putOptional(j, "capabilityBitsPerSecond", node.capabilityBitsPerSecond);
}

void from_json(const Json& j, TopologyNode& node) {
    node.label = required<std::string>(j, "label");
    node.kind = required<std::string>(j, "kind");
    node.linkBitsPerSecond = optionalValue<std::int64_t>(j, "linkBitsPerSecond");
    node.qualifiers = required<std::vector<std::string>>(j, "qualifiers");
    node.capabilityBitsPerSecond = optionalValue<std::int64_t>(j, "capabilityBitsPerSecond");
}

void to_json(Json& j, const DeviceTopology& topology) {
    j = Json{{"diskID", topology.diskID},
             {"path", topology.path},
             {"branches", topology.branches},
             {"findings", topology.findings}};
    putOptional(j, "effectiveLinkBitsPerSecond", topology.effectiveLinkBitsPerSecond);
    putOptional(j, "transport", topology.transport);
}

void from_json(const Json& j, DeviceTopology& topology) {
    topology.diskID = required<std::string>(j, "diskID");
    topology.path = required<std::vector<TopologyNode>>(j, "path");
    topology.branches = required<std::vector<TopologyNode>>(j, "branches");
    topology.findings = required<std::vector<Finding>>(j, "findings");
    topology.effectiveLinkBitsPerSecond = optionalValue<std::int64_t>(j, "effectiveLinkBitsPerSecond");
    topology.transport = optionalValue<std::string>(j, "transport");
}

}  // namespace corvel
