// Decisions about a disk's chain of I/O registry entries (nearest first), kept apart from the
// thin platform file that reads them: the USB device the disk sits in, the PCIe function with its
// link registers, and the Thunderbolt switch on the way. Pure; unknown or ill-typed properties
// are treated as absent.
//
//   if (auto usb = RegistryPath::usbDevice(chain)) locate(usb->locationID);
//   if (auto pcie = RegistryPath::pcieDevice(chain)) judge(pcie->current, pcie->maximum);
#pragma once

#include "topology/PCIeLink.h"
#include "topology/RegistryEntry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvel::RegistryPath {

struct USBDevice {
    std::string name;
    std::optional<std::uint32_t> locationID;
    std::optional<std::int64_t> linkBitsPerSecond;
    std::optional<int> usbVersion;  // BCD, from "bcdUSB"

    bool operator==(const USBDevice&) const = default;
};

struct PCIeDevice {
    std::string name;
    std::size_t index = 0;            // its place in the chain
    std::optional<PCIeLink> current;  // from IOPCIExpressLinkStatus
    std::optional<PCIeLink> maximum;  // from IOPCIExpressLinkCapabilities

    bool operator==(const PCIeDevice&) const = default;
};

// The USB device nearest to the disk: an entry with a "locationID" and a USB speed or version.
std::optional<USBDevice> usbDevice(const std::vector<RegistryEntry>& chain);
// The PCIe function nearest to the disk that publishes a link status.
std::optional<PCIeDevice> pcieDevice(const std::vector<RegistryEntry>& chain);
// The PCIe function above `after` (the port the device hangs off), when it publishes capabilities.
std::optional<PCIeDevice> upstreamPort(const std::vector<RegistryEntry>& chain, const PCIeDevice& after);
// The UID of the Thunderbolt switch nearest to the disk, when the chain passes one.
std::optional<std::uint64_t> thunderboltSwitch(const std::vector<RegistryEntry>& chain);
// Whether the chain passes through Apple's on-chip storage fabric (the internal SSD of Apple silicon).
bool isAppleFabric(const std::vector<RegistryEntry>& chain);

// A numeric property, also when a recording or the registry writes it as text ("0x1103").
std::optional<std::uint64_t> number(const RegistryEntry& entry, const char* key);

}  // namespace corvel::RegistryPath
