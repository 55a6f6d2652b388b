// How a disk reaches the machine, as the device topology names it: the `transport` of a
// DeviceTopology holds the raw value. Transports without a negotiated link (Apple's on-chip
// fabric, a virtual machine's paravirtual bus) have no speed that could be slower than it should,
// so a located disk on one counts as inspected without a link speed.
//
//   DeviceTopology topology{.transport = std::string(rawValue(LinkTransport::usb))};
//   hasNegotiatedLink(LinkTransport::fabric) == false
#pragma once

#include "common/EnumTable.h"

#include <array>

namespace corvel {

enum class LinkTransport { usb, thunderbolt, pcie, sata, fabric, virtualBus };

template <>
struct EnumTable<LinkTransport> {
    static constexpr std::array<EnumEntry<LinkTransport>, 6> entries{{
        {LinkTransport::usb, "usb", "USB"},
        {LinkTransport::thunderbolt, "thunderbolt", "Thunderbolt"},
        {LinkTransport::pcie, "pcie", "PCI Express"},
        {LinkTransport::sata, "sata", "SATA"},
        {LinkTransport::fabric, "fabric", "Apple Fabric"},
        {LinkTransport::virtualBus, "virtual", "Virtual"},
    }};
};

CORVEL_ENUM_JSON(LinkTransport)

constexpr bool hasNegotiatedLink(LinkTransport transport) {
    return transport != LinkTransport::fabric && transport != LinkTransport::virtualBus;
}

}  // namespace corvel
