// The link-speed rules: each looks at one disk's path and fires only on speeds the platform
// actually reported (an unknown speed, version or medium never fires anything). Rule ids:
//   "topology.usbSlowLink"           a USB 3 device that negotiated USB 2 speed (480 Mb/s or less)
//   "topology.pcieDowntrained"       an NVMe drive trained at fewer lanes or a lower generation
//   "topology.sataSlowLink"          a solid-state drive on a SATA link below 6 Gb/s
//   "topology.thunderboltUSBBridge"  a disk reached through the USB hub inside a Thunderbolt dock
//
//   for (const Finding& finding : TopologyRules::evaluate(path, disk)) show(finding);
#pragma once

#include "diagnostics/Finding.h"
#include "storage/PhysicalDisk.h"
#include "topology/DiskPath.h"

#include <vector>

namespace corvel::TopologyRules {

std::vector<Finding> evaluate(const DiskPath& path, const PhysicalDisk& disk);

std::vector<Finding> usbSlowLink(const DiskPath& path, const PhysicalDisk& disk);
std::vector<Finding> pcieDowntrained(const DiskPath& path, const PhysicalDisk& disk);
std::vector<Finding> sataSlowLink(const DiskPath& path, const PhysicalDisk& disk);
std::vector<Finding> thunderboltUSBBridge(const DiskPath& path, const PhysicalDisk& disk);

}  // namespace corvel::TopologyRules
