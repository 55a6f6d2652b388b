// Each disk's connection path on Linux, from sysfs: /sys/block/<disk>/device resolved to its bus
// path, then the USB speed, version and port count of every hub and device on the way, the PCIe
// link (current and maximum speed and width) of an NVMe drive and its port, the SATA link speed of
// /sys/class/ata_link, or the paravirtual bus of a virtual machine. Every speed that is missing or
// unreadable stays unknown; nothing here throws.
//
//   SysfsTree sysfs("/");
//   for (const DiskPath& path : LinuxTopologyReader::read(sysfs, snapshot.disks)) ...
#pragma once

#include "storage/PhysicalDisk.h"
#include "topology/DiskPath.h"
#include "topology/SysfsReading.h"

#include <vector>

namespace corvel::LinuxTopologyReader {

// One path per disk, in order; a disk whose device cannot be followed has no hops.
std::vector<DiskPath> read(SysfsReading& sysfs, const std::vector<PhysicalDisk>& disks);

DiskPath read(SysfsReading& sysfs, const PhysicalDisk& disk);

}  // namespace corvel::LinuxTopologyReader
