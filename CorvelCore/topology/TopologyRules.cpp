#include "topology/TopologyRules.h"

#include "topology/LinkSpeed.h"

#include <fmt/format.h>
#include <algorithm>
#include <cmath>

namespace corvel::TopologyRules {
namespace {

constexpr std::int64_t sata3 = 6'000'000'000;

const TopologyHop* diskHop(const DiskPath& path) {
    return path.hops.empty() ? nullptr : &path.hops.back();
}

bool isUSB(const TopologyHop& hop) {
    return hop.bus == LinkTransport::usb;
}

// The first hub before the disk that itself only runs at USB 2 speed: the usual culprit.
const TopologyHop* usb2Hub(const DiskPath& path) {
    for (std::size_t i = 0; i + 1 < path.hops.size(); ++i) {
        const auto& hop = path.hops[i];
        if (hop.node.kind != "hub" || !isUSB(hop) || !hop.node.linkBitsPerSecond) continue;
        if (*hop.node.linkBitsPerSecond <= LinkSpeed::usb2) return &hop;
    }
    return nullptr;
}

// The fastest the machine's side of the USB path can go: its controller or root port.
std::optional<std::int64_t> hostCapability(const DiskPath& path) {
    std::optional<std::int64_t> best;
    for (std::size_t i = 0; i + 1 < path.hops.size(); ++i) {
        const auto& node = path.hops[i].node;
        if (node.kind != "controller" && node.kind != "port") continue;
        if (node.capabilityBitsPerSecond) best = std::max(best.value_or(0), *node.capabilityBitsPerSecond);
    }
    return best;
}

// Payload bytes per second of a link with 8b/10b coding (SATA, USB 2 is close enough).
long long megabytesPerSecond(std::int64_t bitsPerSecond) {
    return std::llround(static_cast<double>(bitsPerSecond) / 10.0 / 1e6);
}

}  // namespace

std::vector<Finding> usbSlowLink(const DiskPath& path, const PhysicalDisk& disk) {
    const auto* hop = diskHop(path);
    if (!hop || !isUSB(*hop) || !hop->node.linkBitsPerSecond || !hop->usbVersion) return {};
    const auto negotiated = *hop->node.linkBitsPerSecond;
    const auto capability = LinkSpeed::usbVersionCapability(*hop->usbVersion);
    if (!capability || *capability < LinkSpeed::usb3 || negotiated > LinkSpeed::usb2) return {};

    const std::string name = disk.displayName();
    const std::string version = LinkSpeed::usbVersionText(*hop->usbVersion);
    std::string cause;
    std::string recommendation = "Use a USB 3 (SuperSpeed) cable and connect the drive directly to a USB 3 port.";
    if (const auto* hub = usb2Hub(path)) {
        cause = " because it is connected through " + hub->node.label + ", which runs at " +
                linkSpeedText(*hub->node.linkBitsPerSecond);
        recommendation = "Connect the drive directly to a USB 3 port of the machine, or through a USB 3 hub.";
    } else if (const auto host = hostCapability(path); host && *host >= LinkSpeed::usb3) {
        cause =
            " although the port supports " + linkSpeedText(*host) + ": the cable or an adapter is likely USB 2 only";
    }
    return {Finding::make(
        "topology.usbSlowLink", Severity::warning, FindingSubject::disk(disk.id), name,
        "USB 3 drive runs at USB 2 speed",
        fmt::format("{} declares {} (at least {}) but negotiated {}{}.", name, version, linkSpeedText(*capability),
                    linkSpeedText(negotiated), cause),
        recommendation,
        fmt::format("{}: negotiated {}; the device declares {}", hop->node.label, linkSpeedText(negotiated), version),
        fmt::format("Transfers are limited to about {} MB/s, a tenth or less of what a USB 3 drive can do.",
                    megabytesPerSecond(negotiated)))};
}

std::vector<Finding> pcieDowntrained(const DiskPath& path, const PhysicalDisk& disk) {
    const auto* hop = diskHop(path);
    if (!hop || !hop->pcieLink || !hop->pcieMaximum) return {};
    const auto& current = *hop->pcieLink;
    const auto& maximum = *hop->pcieMaximum;
    if (current.width >= maximum.width && current.generation >= maximum.generation) return {};

    const std::string name = disk.displayName();
    std::string detail =
        fmt::format("{} runs at {} ({}) but supports {} ({}).", name, current.text(),
                    linkSpeedText(current.bitsPerSecond()), maximum.text(), linkSpeedText(maximum.bitsPerSecond()));
    std::string recommendation =
        "Reseat the drive and check the firmware's lane-sharing settings for its slot; a link that keeps training "
        "low can also point to a damaged contact, riser or adapter.";
    // The port above the drive may itself be narrower or older: then the slot sets the limit.
    if (path.hops.size() >= 2) {
        const auto& port = path.hops[path.hops.size() - 2];
        if (port.pcieMaximum &&
            (port.pcieMaximum->width < maximum.width || port.pcieMaximum->generation < maximum.generation)) {
            detail +=
                fmt::format(" The port it sits behind supports only {}, so the slot, not the drive, sets the limit.",
                            port.pcieMaximum->text());
            recommendation =
                "Move the drive to an M.2 slot wired for all of its lanes at its generation (the board manual lists "
                "which slots hang off the processor and which share lanes).";
        }
    }
    const double share = static_cast<double>(current.bitsPerSecond()) / static_cast<double>(maximum.bitsPerSecond());
    return {
        Finding::make("topology.pcieDowntrained", Severity::warning, FindingSubject::disk(disk.id), name,
                      "NVMe drive trained below its PCIe link", detail, recommendation,
                      fmt::format("{}: current link {}, maximum {}", hop->node.label, current.text(), maximum.text()),
                      fmt::format("Sequential transfers are capped at about {}% of the bandwidth the drive supports.",
                                  std::lround(share * 100)))};
}

std::vector<Finding> sataSlowLink(const DiskPath& path, const PhysicalDisk& disk) {
    const auto* hop = diskHop(path);
    if (!hop || hop->bus != LinkTransport::sata || !hop->node.linkBitsPerSecond) return {};
    if (disk.isSolidState != true) return {};
    const auto negotiated = *hop->node.linkBitsPerSecond;
    if (negotiated >= sata3) return {};

    const std::string name = disk.displayName();
    std::string detail = fmt::format(
        "{} is a solid-state drive, but its SATA link negotiated {}; SATA SSDs need the 6 Gb/s link to reach their "
        "speed.",
        name, linkSpeedText(negotiated));
    std::string recommendation = "Check the SATA cable and the port's speed setting in the firmware.";
    if (const auto limit = hop->node.capabilityBitsPerSecond; limit && *limit < sata3) {
        detail += " The controller port supports at most " + linkSpeedText(*limit) + ".";
        recommendation = "Connect the drive to a 6 Gb/s (SATA III) port.";
    }
    return {Finding::make("topology.sataSlowLink", Severity::warning, FindingSubject::disk(disk.id), name,
                          "SATA SSD on a " + linkSpeedText(negotiated) + " link", detail, recommendation,
                          fmt::format("{}: SATA link {}", hop->node.label, linkSpeedText(negotiated)),
                          fmt::format("Transfers are limited to about {} MB/s instead of about 550 MB/s.",
                                      megabytesPerSecond(negotiated)))};
}

std::vector<Finding> thunderboltUSBBridge(const DiskPath& path, const PhysicalDisk& disk) {
    const auto* hop = diskHop(path);
    if (!hop || !isUSB(*hop)) return {};
    const auto dock = std::find_if(path.hops.begin(), path.hops.end(),
                                   [](const TopologyHop& h) { return h.bus == LinkTransport::thunderbolt; });
    const bool tunnelled =
        std::any_of(path.hops.begin(), path.hops.end(), [](const TopologyHop& h) { return isUSB(h) && h.isTunnelled; });
    if (!tunnelled || dock == path.hops.end()) return {};

    const std::string name = disk.displayName();
    const auto usbSpeed = hop->node.linkBitsPerSecond;
    const auto thunderboltSpeed = dock->node.linkBitsPerSecond;
    std::string detail = name + " reaches the machine through the USB hub inside " + dock->node.label +
                         ", so it runs at USB speed" + (usbSpeed ? " (" + linkSpeedText(*usbSpeed) + ")" : "") +
                         " and shares it with the dock's other USB devices";
    detail += thunderboltSpeed ? " instead of using the " + linkSpeedText(*thunderboltSpeed) + " Thunderbolt link."
                               : " instead of using the Thunderbolt link.";
    std::string evidence = dock->node.label + ": Thunderbolt " +
                           (thunderboltSpeed ? linkSpeedText(*thunderboltSpeed) : std::string("unknown")) + "; " +
                           hop->node.label + ": USB " + (usbSpeed ? linkSpeedText(*usbSpeed) : std::string("unknown"));
    return {Finding::make("topology.thunderboltUSBBridge", Severity::info, FindingSubject::disk(disk.id), name,
                          "Drive runs through a Thunderbolt dock's USB hub", detail,
                          "For full speed, connect the drive directly to a Thunderbolt port of the machine, or use a "
                          "Thunderbolt enclosure.",
                          evidence,
                          "Large copies are limited to the USB link and slow down while other dock devices are busy.")};
}

std::vector<Finding> evaluate(const DiskPath& path, const PhysicalDisk& disk) {
    std::vector<Finding> findings;
    for (auto rule : {usbSlowLink, pcieDowntrained, sataSlowLink, thunderboltUSBBridge}) {
        auto found = rule(path, disk);
        findings.insert(findings.end(), found.begin(), found.end());
    }
    return findings;
}

}  // namespace corvel::TopologyRules
