// The parts of a resolved Linux device path, named by what they are, so that the topology reader
// can walk from the machine to a disk: "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/
// host6/target6:0:0/6:0:0:0" is a PCI root, a PCI function (the USB controller), a USB root hub,
// a USB device, its interface, then the SCSI layers of the disk. Pure; no file is read.
//
//   auto parts = SysfsDevicePath::decode("/sys/devices/pci0000:00/0000:00:1d.0/0000:3d:00.0/nvme/nvme0");
//   parts[2].kind == SysfsDevicePath::Kind::pci && parts[2].path == "/sys/devices/pci0000:00/0000:00:1d.0/0000:3d:00.0"
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvel::SysfsDevicePath {

enum class Kind {
    pciRoot,       // pci0000:00
    pci,           // 0000:00:14.0
    usbRoot,       // usb2 (a root hub: one bus of a USB controller)
    usb,           // 2-1, 2-1.4 (a device or hub)
    usbInterface,  // 2-1:1.0
    ata,           // ata3 (a SATA port)
    nvme,          // nvme0
    virtio,        // virtio1
    other,         // SCSI hosts and targets, class folders, anything else
};

struct Part {
    Kind kind = Kind::other;
    std::string name;
    std::string path;  // the folder of this part
    bool operator==(const Part&) const = default;
};

// Every component after "/sys/devices", in order.
std::vector<Part> decode(std::string_view devicePath);

Kind kindOf(std::string_view name);

// The USB bus number of a root hub ("usb2" → 2) or device ("2-1.4" → 2); -1 when there is none.
int usbBus(std::string_view name);

// Whether `child` ("2-1.4") hangs directly off the hub `hub` ("2-1", or the root hub "usb2").
bool isDirectUSBChild(std::string_view hub, std::string_view child);

// What a PCI class code ("0x010802") says the function is: "NVMe controller", "USB controller", …
std::string pciClassName(std::string_view classFile);

}  // namespace corvel::SysfsDevicePath
