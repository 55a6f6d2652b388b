// One PCI Express link state: its generation (transfer rate) and lane count, from the Linux
// sysfs files or from the raw Link Status / Link Capabilities registers the I/O registry
// publishes on macOS. Speeds are line rates, as hardware names them: PCIe 3.0 x4 is 8 GT/s on
// each of four lanes, 32 Gb/s.
//
//   PCIeLink::fromLinkStatus(0x1103) == PCIeLink{3, 16}          // 8 GT/s, x16
//   PCIeLink::fromSysfs("8.0 GT/s PCIe", "2") == PCIeLink{3, 2}
//   PCIeLink{4, 4}.text() == "PCIe 4.0 x4";  PCIeLink{3, 4}.bitsPerSecond() == 32'000'000'000
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel {

struct PCIeLink {
    int generation = 0;  // 1 (2.5 GT/s) … 6 (64 GT/s)
    int width = 0;       // lanes: 1, 2, 4, 8, 12, 16 or 32

    std::int64_t bitsPerSecond() const;
    // "PCIe 3.0 x4"
    std::string text() const;

    // Register fields: speed code in bits 0-3, width in bits 4-9 (the same layout in Link Status
    // and Link Capabilities). Absent when either field holds a value no link can have.
    static std::optional<PCIeLink> fromLinkStatus(std::uint32_t linkStatus);
    static std::optional<PCIeLink> fromLinkCapabilities(std::uint32_t linkCapabilities);
    // `current_link_speed` / `max_link_speed` ("8.0 GT/s PCIe", "2.5 GT/s") and the matching width file.
    static std::optional<PCIeLink> fromSysfs(std::string_view speedFile, std::string_view widthFile);
    // The generation of a sysfs speed text alone.
    static std::optional<int> generationOf(std::string_view speedFile);

    bool operator==(const PCIeLink&) const = default;
};

CORVEL_JSON_RECORD(PCIeLink, generation, width)

}  // namespace corvel
