// Each disk's connection path on macOS. The hardware-report tool gives the buses: its Thunderbolt
// report (buses, receptacles, daisy-chained devices with their link speeds) and its USB host
// report (USB buses, hubs and devices with their negotiated speeds). The I/O registry gives, per
// disk BSD name, the chain of entries above it: the USB device's location ID and declared
// version, or the PCIe function's link registers, and the Thunderbolt switch on the way. A disk
// is matched to its node by BSD name: through its registry chain (location ID, switch UID), or
// by a "Media" entry naming it in the USB report.
//
//   auto reading = MacTopologyReader::discover(runner, &registry, snapshot.disks);
//   MacTopologyReader::locate(disk, sources)   // the pure half, for one disk
#pragma once

#include "command/CommandRunning.h"
#include "storage/PhysicalDisk.h"
#include "topology/DeviceRegistryReading.h"
#include "topology/DiskPath.h"
#include "topology/ThunderboltReport.h"
#include "topology/TopologyReading.h"
#include "topology/USBHostReport.h"

#include <optional>
#include <string>
#include <vector>

namespace corvel::MacTopologyReader {

struct Sources {
    std::optional<std::vector<ThunderboltBus>> thunderbolt;  // absent: the report could not be read
    std::optional<std::vector<USBHostNode>> usb;
    DeviceRegistryReading* registry = nullptr;  // null: no registry to ask
};

DiskPath locate(const PhysicalDisk& disk, const Sources& sources);

// Runs both reports through the hardware-report tool's policy (their failures become warnings),
// then locates every disk.
TopologyReading discover(CommandRunning& runner, DeviceRegistryReading* registry,
                         const std::vector<PhysicalDisk>& disks);

}  // namespace corvel::MacTopologyReader
