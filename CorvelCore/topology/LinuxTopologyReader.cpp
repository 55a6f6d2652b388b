#include "topology/LinuxTopologyReader.h"

#include "common/Text.h"
#include "topology/LinkSpeed.h"
#include "topology/SysfsDevicePath.h"

#include <algorithm>

namespace corvel::LinuxTopologyReader {
namespace {

using SysfsDevicePath::Kind;
using SysfsDevicePath::Part;

std::optional<std::string> text(SysfsReading& sysfs, const std::string& path) {
    auto contents = sysfs.read(path);
    if (!contents) return std::nullopt;
    auto trimmed = std::string(trim(*contents));
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::string pciLabel(SysfsReading& sysfs, const Part& part) {
    const auto classCode = text(sysfs, part.path + "/class");
    return (classCode ? SysfsDevicePath::pciClassName(*classCode) : std::string("PCI device")) + " " + part.name;
}

// What a USB device says about itself.
struct USBFacts {
    std::optional<std::int64_t> speed;
    std::optional<int> version;
    int ports = 0;
    std::string name;
};

USBFacts usbFacts(SysfsReading& sysfs, const Part& part) {
    USBFacts facts;
    if (auto speed = text(sysfs, part.path + "/speed")) facts.speed = LinkSpeed::fromLinuxUSB(*speed);
    if (auto version = text(sysfs, part.path + "/version")) facts.version = LinkSpeed::usbVersion(*version);
    if (auto ports = text(sysfs, part.path + "/maxchild")) {
        try {
            facts.ports = std::stoi(*ports);
        } catch (...) {
            facts.ports = 0;
        }
    }
    const auto maker = text(sysfs, part.path + "/manufacturer");
    const auto product = text(sysfs, part.path + "/product");
    if (product) facts.name = maker && !startsWith(*product, *maker) ? *maker + " " + *product : *product;
    return facts;
}

// Devices on the same hub as the path, sharing its bandwidth.
void addBranches(SysfsReading& sysfs, const Part& hub, const std::string& onPath, std::vector<TopologyNode>& branches) {
    for (const auto& name : sysfs.list(hub.path)) {
        if (name == onPath || !SysfsDevicePath::isDirectUSBChild(hub.name, name)) continue;
        const auto facts = usbFacts(sysfs, {Kind::usb, name, hub.path + "/" + name});
        branches.push_back({facts.name.empty() ? "USB device " + name : facts.name, "device", facts.speed, {}, {}});
    }
}

void addUSB(SysfsReading& sysfs, const PhysicalDisk& disk, const std::vector<Part>& parts, std::size_t root,
            DiskPath& path) {
    path.transport = LinkTransport::usb;
    if (root > 0 && parts[root - 1].kind == Kind::pci) {
        const auto& controller = parts[root - 1];
        std::optional<std::int64_t> fastest;
        for (const auto& name : sysfs.list(controller.path)) {
            if (SysfsDevicePath::kindOf(name) != Kind::usbRoot) continue;
            if (auto speed = text(sysfs, controller.path + "/" + name + "/speed"))
                if (auto bits = LinkSpeed::fromLinuxUSB(*speed)) fastest = std::max(fastest.value_or(0), *bits);
        }
        path.hops.push_back(TopologyHop::of({pciLabel(sysfs, controller), "controller", std::nullopt, {}, fastest}));
    }
    std::vector<std::size_t> devices;
    for (std::size_t i = root + 1; i < parts.size(); ++i)
        if (parts[i].kind == Kind::usb) devices.push_back(i);

    const auto& rootHub = parts[root];
    const auto rootFacts = usbFacts(sysfs, rootHub);
    const std::string version = rootFacts.version ? LinkSpeed::usbVersionText(*rootFacts.version) + " " : "";
    path.hops.push_back(
        TopologyHop::of({version + "root hub (bus " + std::to_string(SysfsDevicePath::usbBus(rootHub.name)) + ")",
                         "port",
                         rootFacts.speed,
                         {},
                         rootFacts.speed},
                        LinkTransport::usb));
    if (!devices.empty()) addBranches(sysfs, rootHub, parts[devices.front()].name, path.branches);

    for (std::size_t n = 0; n < devices.size(); ++n) {
        const auto& part = parts[devices[n]];
        const auto facts = usbFacts(sysfs, part);
        const bool last = n + 1 == devices.size();
        auto hop = TopologyHop::of({}, LinkTransport::usb);
        hop.usbVersion = facts.version;
        hop.node.kind = last ? "disk" : "hub";
        hop.node.label = last ? disk.displayName() : (facts.name.empty() ? "USB hub " + part.name : facts.name);
        hop.node.linkBitsPerSecond = facts.speed;
        if (facts.version) {
            hop.node.capabilityBitsPerSecond = LinkSpeed::usbVersionCapability(*facts.version);
            hop.node.qualifiers.push_back(LinkSpeed::usbVersionText(*facts.version) + (last ? " device" : " hub"));
        }
        if (!last && facts.ports > 0) {
            hop.node.qualifiers.push_back(std::to_string(facts.ports) + " ports");
            addBranches(sysfs, part, parts[devices[n + 1]].name, path.branches);
        }
        path.hops.push_back(std::move(hop));
    }
    if (devices.empty())
        path.hops.push_back(TopologyHop::of({disk.displayName(), "disk", std::nullopt, {}, {}}, LinkTransport::usb));
}

std::optional<PCIeLink> pcieLink(SysfsReading& sysfs, const std::string& folder, const char* which) {
    const auto speed = text(sysfs, folder + "/" + which + "_link_speed");
    const auto width = text(sysfs, folder + "/" + which + "_link_width");
    if (!speed || !width) return std::nullopt;
    return PCIeLink::fromSysfs(*speed, *width);
}

void addNVMe(SysfsReading& sysfs, const PhysicalDisk& disk, const std::vector<Part>& parts, std::size_t device,
             DiskPath& path) {
    path.transport = LinkTransport::pcie;
    for (std::size_t i = 0; i < device; ++i) {
        const auto& part = parts[i];
        if (part.kind == Kind::pciRoot) {
            path.hops.push_back(TopologyHop::of(
                {"PCI Express root complex " + part.name.substr(3), "controller", std::nullopt, {}, {}}));
        } else if (part.kind == Kind::pci) {
            auto hop = TopologyHop::of({}, LinkTransport::pcie);
            hop.pcieMaximum = pcieLink(sysfs, part.path, "max");
            hop.node = {pciLabel(sysfs, part), path.hops.size() <= 1 ? "port" : "bridge", std::nullopt, {}, {}};
            if (hop.pcieMaximum) {
                hop.node.capabilityBitsPerSecond = hop.pcieMaximum->bitsPerSecond();
                hop.node.qualifiers.push_back("supports " + hop.pcieMaximum->text());
            }
            path.hops.push_back(std::move(hop));
        }
    }
    const auto& nvme = parts[device];
    auto hop = TopologyHop::of({}, LinkTransport::pcie);
    hop.pcieLink = pcieLink(sysfs, nvme.path, "current");
    hop.pcieMaximum = pcieLink(sysfs, nvme.path, "max");
    hop.node = {disk.displayName(), "disk", std::nullopt, {}, {}};
    if (hop.pcieLink) {
        hop.node.linkBitsPerSecond = hop.pcieLink->bitsPerSecond();
        hop.node.qualifiers.push_back(hop.pcieLink->text());
    }
    if (hop.pcieMaximum) {
        hop.node.capabilityBitsPerSecond = hop.pcieMaximum->bitsPerSecond();
        hop.node.qualifiers.push_back("supports " + hop.pcieMaximum->text());
    }
    path.hops.push_back(std::move(hop));
}

void addSATA(SysfsReading& sysfs, const PhysicalDisk& disk, const std::vector<Part>& parts, std::size_t port,
             DiskPath& path) {
    path.transport = LinkTransport::sata;
    if (port > 0 && parts[port - 1].kind == Kind::pci)
        path.hops.push_back(TopologyHop::of({pciLabel(sysfs, parts[port - 1]), "controller", std::nullopt, {}, {}}));
    // The port's link: /sys/class/ata_link/link<N>, N being the port number of ata<N>.
    const std::string link = "/sys/class/ata_link/link" + parts[port].name.substr(3);
    auto hop = TopologyHop::of({}, LinkTransport::sata);
    hop.node = {disk.displayName(), "disk", std::nullopt, {parts[port].name}, {}};
    if (auto speed = text(sysfs, link + "/sata_spd")) hop.node.linkBitsPerSecond = LinkSpeed::fromSATA(*speed);
    if (auto limit = text(sysfs, link + "/hw_sata_spd_limit"))
        hop.node.capabilityBitsPerSecond = LinkSpeed::fromSATA(*limit);
    path.hops.push_back(std::move(hop));
}

}  // namespace

DiskPath read(SysfsReading& sysfs, const PhysicalDisk& disk) {
    DiskPath path;
    path.diskID = disk.id;
    // Kernel names only: anything with a "/" could walk out of /sys/block.
    if (disk.id.empty() || disk.id.find('/') != std::string::npos || disk.id == "." || disk.id == "..") return path;
    const auto device = sysfs.resolve("/sys/block/" + disk.id + "/device");
    if (!device) return path;
    const auto parts = SysfsDevicePath::decode(*device);
    const auto find = [&](Kind kind) {
        return std::find_if(parts.begin(), parts.end(), [kind](const Part& p) { return p.kind == kind; });
    };
    if (auto usb = find(Kind::usbRoot); usb != parts.end()) {
        addUSB(sysfs, disk, parts, static_cast<std::size_t>(usb - parts.begin()), path);
    } else if (auto nvme = find(Kind::nvme); nvme != parts.end()) {
        // The NVMe function is the PCI part right above its controller folder ("…/0000:3d:00.0/nvme/nvme0").
        auto function = std::find_if(std::make_reverse_iterator(nvme), parts.rend(),
                                     [](const Part& p) { return p.kind == Kind::pci; });
        if (function != parts.rend())
            addNVMe(sysfs, disk, parts, static_cast<std::size_t>(parts.rend() - function - 1), path);
    } else if (auto ata = find(Kind::ata); ata != parts.end()) {
        addSATA(sysfs, disk, parts, static_cast<std::size_t>(ata - parts.begin()), path);
    } else if (auto virtio = find(Kind::virtio); virtio != parts.end()) {
        path.transport = LinkTransport::virtualBus;
        const auto index = static_cast<std::size_t>(virtio - parts.begin());
        if (index > 0 && parts[index - 1].kind == Kind::pci)
            path.hops.push_back(
                TopologyHop::of({"virtio " + pciLabel(sysfs, parts[index - 1]), "controller", std::nullopt, {}, {}}));
        path.hops.push_back(
            TopologyHop::of({disk.displayName(), "disk", std::nullopt, {virtio->name}, {}}, LinkTransport::virtualBus));
    } else if (!parts.empty()) {
        // Located, but on a bus we do not read (MMC, a SAS adapter, …): shown, never judged.
        path.hops.push_back(TopologyHop::of({disk.displayName(), "disk", std::nullopt, {}, {}}));
    }
    return path;
}

std::vector<DiskPath> read(SysfsReading& sysfs, const std::vector<PhysicalDisk>& disks) {
    std::vector<DiskPath> paths;
    for (const auto& disk : disks) paths.push_back(read(sysfs, disk));
    return paths;
}

}  // namespace corvel::LinuxTopologyReader
