// `velmora topology` (each physical disk's path from the machine to the drive, with the link speed
// at every hop and the link findings) and `velmora hardware` (model, chip, memory, battery,
// displays, USB devices, the internal disk's breakdown). Both only read.
#include "CliErrors.h"
#include "Commands.h"
#include "DiagnoseCommands.h"
#include "common/ByteFormat.h"
#include "common/Text.h"
#include "machine/MachineHardware.h"
#include "machine/MachineTopology.h"
#include "topology/TopologyAssembly.h"

#include <fmt/format.h>
#include <algorithm>

namespace corvel::cli {
namespace {

std::string diskHeading(const StorageSnapshot& snapshot, const DeviceTopology& topology, const Style& style) {
    const auto disk = snapshot.disk(topology.diskID);
    const std::string name = disk ? disk->displayName() : topology.diskID;
    std::string text = style.bold(terminalSafe(name));
    if (name != topology.diskID) text += " (" + terminalSafe(topology.diskID) + ")";
    std::vector<std::string> facts;
    if (topology.transport) {
        const auto transport = enumFromRaw<LinkTransport>(*topology.transport);
        facts.push_back(transport ? std::string(label(*transport)) : terminalSafe(*topology.transport));
    }
    if (topology.effectiveLinkBitsPerSecond)
        facts.push_back(linkSpeedText(*topology.effectiveLinkBitsPerSecond) + " effective");
    if (!topology.isInspected()) facts.push_back(style.yellow("not inspected"));
    if (!facts.empty()) text += " \u00B7 " + join(facts, " \u00B7 ");
    return text;
}

// The path as an indented tree: each hop one step further in, with the link into it.
void printPath(CliContext& context, const DeviceTopology& topology) {
    const auto& style = context.style();
    if (topology.path.empty()) {
        context.out() << "    " << style.dim("Path not found.") << '\n';
        return;
    }
    Table table;
    for (std::size_t hop = 0; hop < topology.path.size(); ++hop) {
        const auto& node = topology.path[hop];
        const std::string indent(2 * hop, ' ');
        const std::string branch = hop == 0 ? "" : "\u2514\u2500 ";
        std::string link = TopologyAssembly::linkText(topology, hop);
        if (link == "unknown") link = style.dim(link);
        // PCIe nodes already name what they support (generation and lanes) among their qualifiers.
        const bool named = std::any_of(node.qualifiers.begin(), node.qualifiers.end(),
                                       [](const std::string& q) { return startsWith(q, "supports "); });
        std::string notes = named ? "" : style.dim(TopologyAssembly::capabilityText(node));
        for (const auto& qualifier : node.qualifiers) notes += (notes.empty() ? "" : ", ") + terminalSafe(qualifier);
        table.addRow({indent + branch + terminalSafe(node.label) + style.dim(" [" + node.kind + "]"), link, notes});
    }
    table.print(context.out(), "    ");
    for (const auto& other : topology.branches)
        context.out() << "    " << style.dim("Shares the path with: ") << terminalSafe(other.label) << '\n';
}

void printTopology(CliContext& context, const StorageSnapshot& snapshot, const TopologyReading& reading) {
    const auto& style = context.style();
    auto& out = context.out();
    out << style.bold("Topology") << '\n';
    if (reading.topologies.empty()) out << "  " << style.dim("No physical disks.") << '\n';
    for (const auto& topology : reading.topologies) {
        out << "  " << diskHeading(snapshot, topology, style) << '\n';
        printPath(context, topology);
    }
    out << '\n' << style.bold("Findings") << '\n';
    bool any = false;
    for (const auto& topology : reading.topologies) {
        for (const auto& finding : topology.findings) {
            if (any) out << '\n';
            printFinding(context, finding);
            any = true;
        }
    }
    if (!any) out << "  " << style.dim("No link findings.") << '\n';
    if (reading.warnings.empty()) return;
    out << '\n' << style.bold("Warnings") << '\n';
    for (const auto& warning : reading.warnings) out << "  " << style.yellow(terminalSafe(warning)) << '\n';
}

std::string batteryText(const BatteryHealth& battery) {
    std::vector<std::string> parts;
    if (battery.cycleCount) parts.push_back(fmt::format("{} cycles", *battery.cycleCount));
    if (battery.condition) parts.push_back(terminalSafe(*battery.condition));
    if (battery.capacityFraction) {
        std::string capacity = percent(*battery.capacityFraction) + " of design capacity";
        if (battery.fullChargeCapacity && battery.designCapacity)
            capacity += fmt::format(" ({} of {} {})", groupedCount(*battery.fullChargeCapacity),
                                    groupedCount(*battery.designCapacity), battery.capacityUnit.value_or(""));
        parts.push_back(capacity);
    }
    if (battery.chargePercent)
        parts.push_back(
            fmt::format("{}% charged{}", *battery.chargePercent, battery.isCharging == true ? ", charging" : ""));
    return parts.empty() ? "present" : join(parts, " \u00B7 ");
}

void printHardware(CliContext& context, const HardwareSummary& summary) {
    const auto& style = context.style();
    auto& out = context.out();
    const auto unknown = style.dim("unknown");
    out << style.bold("Hardware") << '\n';
    Table facts;
    std::string model = summary.model ? terminalSafe(*summary.model) : unknown;
    if (summary.modelIdentifier) model += style.dim(" (" + terminalSafe(*summary.modelIdentifier) + ")");
    if (summary.vendor) model = terminalSafe(*summary.vendor) + " " + model;
    facts.addRow({"Model", model});
    std::string chip = summary.chip ? terminalSafe(*summary.chip) : unknown;
    if (summary.processorCount) chip += fmt::format(" \u00B7 {} cores", *summary.processorCount);
    facts.addRow({"Chip", chip});
    facts.addRow({"Memory", summary.memoryBytes ? HardwareSummary::memoryText(*summary.memoryBytes) : unknown});
    facts.addRow({"Battery", summary.battery ? batteryText(*summary.battery) : style.dim("none reported")});
    facts.print(out, "  ");

    out << '\n' << style.bold("Displays") << '\n';
    if (summary.displays.empty()) out << "  " << style.dim("None reported.") << '\n';
    Table displays;
    for (const auto& display : summary.displays)
        displays.addRow({terminalSafe(display.name), terminalSafe(display.resolution.value_or("")),
                         terminalSafe(display.connection.value_or("")), display.isMain ? "main" : ""});
    displays.print(out, "  ");

    out << '\n' << style.bold("USB devices") << '\n';
    if (summary.usbDevices.empty()) out << "  " << style.dim("None reported.") << '\n';
    Table usb;
    for (const auto& device : summary.usbDevices)
        usb.addRow({terminalSafe(device.name), terminalSafe(device.vendor.value_or("")),
                    device.linkBitsPerSecond ? linkSpeedText(*device.linkBitsPerSecond) : ""});
    usb.print(out, "  ");

    out << '\n' << style.bold("Internal disk") << '\n';
    if (const auto& disk = summary.internalDisk) {
        out << "  " << terminalSafe(disk->diskName)
            << style.dim(" \u00B7 scan of " + terminalSafe(disk->scanRoot) + " at " + ISO8601::format(disk->scannedAt) +
                         (disk->isPartial ? " (partial)" : ""))
            << '\n';
        using A = Table::Align;
        Table categories({A::left, A::right});
        for (const auto& category : disk->categories)
            categories.addRow({std::string(label(category.category)), ByteFormat::string(category.bytes)});
        if (disk->unattributedBytes > 0)
            categories.addRow({style.dim("Elsewhere in the scan"), ByteFormat::string(disk->unattributedBytes)});
        categories.print(out, "  ");
    } else {
        out << "  " << style.dim("No scan of an internal disk yet (run velmora scan).") << '\n';
    }
    if (summary.warnings.empty()) return;
    out << '\n' << style.bold("Warnings") << '\n';
    for (const auto& warning : summary.warnings) out << "  " << style.yellow(terminalSafe(warning)) << '\n';
}

}  // namespace

void registerTopologyCommands(CLI::App& app, CliContext& context) {
    auto* topology =
        app.add_subcommand("topology", "Show each disk's connection path with its link speeds and link findings");
    topology->callback([&context] {
        auto& machine = context.machine();
        const auto snapshot = machine.snapshot();
        const auto reading = MachineTopology::read(machine, snapshot);
        if (context.json()) {
            context.printJson(reading);
            return;
        }
        context.printSource();
        printTopology(context, snapshot, reading);
    });

    auto* hardware = app.add_subcommand(
        "hardware", "Show the model, chip, memory, battery, displays, USB devices and internal disk breakdown");
    hardware->callback([&context] {
        auto& machine = context.machine();
        const auto summary = MachineHardware::read(machine, machine.snapshot());
        if (context.json()) {
            context.printJson(summary);
            return;
        }
        context.printSource();
        printHardware(context, summary);
    });
}

}  // namespace corvel::cli
