#include "topology/MacTopologyReader.h"

#include "command/CommandError.h"
#include "command/SystemProfilerClient.h"
#include "topology/LinkSpeed.h"
#include "topology/RegistryPath.h"

namespace corvel::MacTopologyReader {
namespace {

DiskPath located(const PhysicalDisk& disk, LinkTransport transport) {
    DiskPath path;
    path.diskID = disk.id;
    path.transport = transport;
    return path;
}

TopologyHop diskHop(const PhysicalDisk& disk, LinkTransport bus) {
    return TopologyHop::of({disk.displayName(), "disk", std::nullopt, {}, {}}, bus);
}

void addPCIeFacts(TopologyHop& hop, const std::optional<PCIeLink>& current, const std::optional<PCIeLink>& maximum) {
    hop.pcieLink = current;
    hop.pcieMaximum = maximum;
    if (current) {
        hop.node.linkBitsPerSecond = current->bitsPerSecond();
        hop.node.qualifiers.push_back(current->text());
    }
    if (maximum) {
        hop.node.capabilityBitsPerSecond = maximum->bitsPerSecond();
        hop.node.qualifiers.push_back("supports " + maximum->text());
    }
}

// The Thunderbolt devices a disk passes: the one its registry chain names, else the only device
// attached at all (a tunnelled USB device must sit behind one), else nothing we could name.
std::optional<ThunderboltReport::Located> thunderboltRoute(const std::optional<std::vector<RegistryEntry>>& chain,
                                                           const Sources& sources) {
    if (!sources.thunderbolt) return std::nullopt;
    if (chain)
        if (const auto uid = RegistryPath::thunderboltSwitch(*chain))
            if (auto located = ThunderboltReport::findSwitch(*sources.thunderbolt, *uid)) return located;
    const auto attached = ThunderboltReport::connectedDevices(*sources.thunderbolt);
    if (attached.size() == 1) return attached.front();
    return std::nullopt;
}

void addThunderboltDevices(const ThunderboltReport::Located& route, DiskPath& path) {
    for (std::size_t i = 0; i < route.chain.size(); ++i) {
        const auto& device = *route.chain[i];
        auto hop = TopologyHop::of({}, LinkTransport::thunderbolt);
        hop.node = {device.name, i + 1 == route.chain.size() ? "bridge" : "hub", device.linkBitsPerSecond, {}, {}};
        if (device.mode) hop.node.qualifiers.push_back(ThunderboltReport::modeText(*device.mode));
        path.hops.push_back(std::move(hop));
    }
}

DiskPath usbPath(const PhysicalDisk& disk, const std::vector<const USBHostNode*>& nodes,
                 const std::optional<RegistryPath::USBDevice>& device,
                 const std::optional<std::vector<RegistryEntry>>& chain, const Sources& sources) {
    auto path = located(disk, LinkTransport::usb);
    const auto& bus = *nodes.front();
    path.hops.push_back(
        TopologyHop::of({bus.name, "controller", std::nullopt, {}, LinkSpeed::usbBusCapability(bus.name)}));

    bool tunnelled = false;
    for (const auto* node : nodes) tunnelled = tunnelled || node->isTunnelled;
    if (tunnelled) {
        if (auto route = thunderboltRoute(chain, sources)) {
            addThunderboltDevices(*route, path);
        } else {
            path.hops.push_back(
                TopologyHop::of({"Thunderbolt/USB4 dock", "bridge", std::nullopt, {}, {}}, LinkTransport::thunderbolt));
        }
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const auto& node = *nodes[i];
        // Other devices on the hubs of this path share their bandwidth.
        if (i + 1 < nodes.size())
            for (const auto& sibling : node.children)
                if (&sibling != nodes[i + 1])
                    path.branches.push_back({sibling.name, "device", sibling.linkBitsPerSecond, {}, {}});
        if (i == 0) continue;
        const bool last = i + 1 == nodes.size();
        auto hop = TopologyHop::of({}, LinkTransport::usb);
        hop.isTunnelled = node.isTunnelled;
        hop.node = {last ? disk.displayName() : node.name, last ? "disk" : "hub", node.linkBitsPerSecond, {}, {}};
        if (node.isTunnelled) hop.node.qualifiers.push_back("USB over Thunderbolt/USB4");
        if (last && device) {
            if (!hop.node.linkBitsPerSecond) hop.node.linkBitsPerSecond = device->linkBitsPerSecond;
            hop.usbVersion = device->usbVersion;
        }
        if (last && hop.usbVersion) {
            hop.node.capabilityBitsPerSecond = LinkSpeed::usbVersionCapability(*hop.usbVersion);
            hop.node.qualifiers.push_back(LinkSpeed::usbVersionText(*hop.usbVersion) + " device");
        }
        path.hops.push_back(std::move(hop));
    }
    return path;
}

DiskPath pciePath(const PhysicalDisk& disk, const RegistryPath::PCIeDevice& function,
                  const std::vector<RegistryEntry>& chain, const Sources& sources) {
    auto path = located(disk, LinkTransport::pcie);
    std::optional<ThunderboltReport::Located> route;
    if (sources.thunderbolt)
        if (const auto uid = RegistryPath::thunderboltSwitch(chain))
            route = ThunderboltReport::findSwitch(*sources.thunderbolt, *uid);
    if (route) {
        path.transport = LinkTransport::thunderbolt;
        path.hops.push_back(TopologyHop::of({route->bus->name, "controller", std::nullopt, {}, {}}));
        addThunderboltDevices(*route, path);
    } else {
        path.hops.push_back(TopologyHop::of({"PCI Express", "controller", std::nullopt, {}, {}}));
        if (const auto port = RegistryPath::upstreamPort(chain, function)) {
            auto hop = TopologyHop::of({}, LinkTransport::pcie);
            hop.pcieMaximum = port->maximum;
            hop.node = {port->name, "port", std::nullopt, {}, {}};
            if (port->maximum) {
                hop.node.capabilityBitsPerSecond = port->maximum->bitsPerSecond();
                hop.node.qualifiers.push_back("supports " + port->maximum->text());
            }
            path.hops.push_back(std::move(hop));
        }
    }
    auto hop = diskHop(disk, LinkTransport::pcie);
    addPCIeFacts(hop, function.current, function.maximum);
    path.hops.push_back(std::move(hop));
    return path;
}

}  // namespace

DiskPath locate(const PhysicalDisk& disk, const Sources& sources) {
    const auto chain = sources.registry ? sources.registry->ancestors(disk.id) : std::nullopt;
    // Apple silicon's internal SSD hangs off the chip's own fabric: nothing is negotiated there.
    const bool fabric = (chain && RegistryPath::isAppleFabric(*chain)) ||
                        (disk.isInternal && disk.busProtocol == std::optional<std::string>("Apple Fabric"));
    if (fabric) {
        auto path = located(disk, LinkTransport::fabric);
        path.hops.push_back(TopologyHop::of({"Apple Fabric", "controller", std::nullopt, {}, {}}));
        path.hops.push_back(diskHop(disk, LinkTransport::fabric));
        return path;
    }

    const auto usbDevice = chain ? RegistryPath::usbDevice(*chain) : std::nullopt;
    if (sources.usb) {
        std::vector<const USBHostNode*> nodes;
        if (usbDevice && usbDevice->locationID) nodes = USBHostReport::pathTo(*sources.usb, *usbDevice->locationID);
        if (nodes.empty()) nodes = USBHostReport::pathToDisk(*sources.usb, disk.id);
        if (nodes.size() >= 2) return usbPath(disk, nodes, usbDevice, chain, sources);
    }
    if (usbDevice) {
        // In the registry but not in the report: the link is still known.
        auto path = located(disk, LinkTransport::usb);
        path.hops.push_back(TopologyHop::of({"USB", "controller", std::nullopt, {}, {}}));
        auto hop = diskHop(disk, LinkTransport::usb);
        hop.node.linkBitsPerSecond = usbDevice->linkBitsPerSecond;
        hop.usbVersion = usbDevice->usbVersion;
        if (hop.usbVersion) hop.node.capabilityBitsPerSecond = LinkSpeed::usbVersionCapability(*hop.usbVersion);
        path.hops.push_back(std::move(hop));
        return path;
    }
    if (chain)
        if (const auto function = RegistryPath::pcieDevice(*chain)) return pciePath(disk, *function, *chain, sources);
    DiskPath nowhere;
    nowhere.diskID = disk.id;
    return nowhere;
}

TopologyReading discover(CommandRunning& runner, DeviceRegistryReading* registry,
                         const std::vector<PhysicalDisk>& disks) {
    std::vector<std::string> warnings;
    Sources sources;
    sources.registry = registry;
    try {
        sources.thunderbolt = ThunderboltReport::parse(SystemProfilerClient(runner).thunderbolt());
    } catch (const CommandError& error) {
        warnings.push_back("Thunderbolt report: " + error.description());
    } catch (const DecodingError& error) {
        warnings.push_back(std::string("Thunderbolt report: ") + error.what());
    }
    try {
        sources.usb = USBHostReport::parse(SystemProfilerClient::policy().run({"SPUSBHostDataType", "-json"}, runner));
    } catch (const CommandError& error) {
        warnings.push_back("USB report: " + error.description());
    } catch (const DecodingError& error) {
        warnings.push_back(std::string("USB report: ") + error.what());
    }
    std::vector<DiskPath> paths;
    for (const auto& disk : disks) paths.push_back(locate(disk, sources));
    return TopologyReading::assemble(paths, disks, std::move(warnings));
}

}  // namespace corvel::MacTopologyReader
