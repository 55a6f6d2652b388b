// The hardware-report tool's USB host report ("SPUSBHostDataType" in its JSON): one entry per
// USB bus of the machine, each holding its hubs and devices as a tree. Lenient like every report
// parser: unknown keys are ignored, a missing or odd speed is absent, entries without a name are
// skipped; only a document that is not JSON or lacks the report's top-level key is an error.
//
//   auto buses = USBHostReport::parse(bytes);                    // throws DecodingError
//   auto chain = USBHostReport::pathTo(buses, 0x01110000);       // bus, hubs, …, the device
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct USBHostNode {
    std::string name;
    std::optional<std::uint32_t> locationID;  // "USBKeyLocationID": the device's place in the bus tree
    std::optional<std::int64_t> linkBitsPerSecond;
    std::optional<std::string> vendor;
    std::optional<std::string> vendorID;
    std::optional<std::string> productID;
    bool isTunnelled = false;           // "USBDeviceKeyUSB4Tunnel": carried over USB4/Thunderbolt
    std::vector<std::string> bsdNames;  // disks under "Media", when the report names them
    std::vector<USBHostNode> children;

    bool operator==(const USBHostNode&) const = default;
};

CORVEL_JSON_RECORD(USBHostNode, name, locationID, linkBitsPerSecond, vendor, vendorID, productID, isTunnelled, bsdNames,
                   children)

namespace USBHostReport {

inline constexpr const char* key = "SPUSBHostDataType";

std::vector<USBHostNode> parse(std::string_view json);
// The report inside an already parsed document (the combined hardware report carries it too).
std::vector<USBHostNode> fromDocument(const Json& document);

// "0x01110000" (or a plain number) as a location ID.
std::optional<std::uint32_t> parseLocationID(std::string_view text);

// The nodes from a bus down to the first node matching, in order; empty when none does.
std::vector<const USBHostNode*> pathTo(const std::vector<USBHostNode>& buses, std::uint32_t locationID);
std::vector<const USBHostNode*> pathToDisk(const std::vector<USBHostNode>& buses, const std::string& bsdName);

// Every device below the buses, depth first (the buses themselves are not devices).
std::vector<const USBHostNode*> devices(const std::vector<USBHostNode>& buses);

}  // namespace USBHostReport
}  // namespace corvel
