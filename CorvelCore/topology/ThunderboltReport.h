// The hardware-report tool's Thunderbolt report ("SPThunderboltDataType"): one entry per
// Thunderbolt/USB4 bus of the machine with its receptacles, and the devices daisy-chained on it.
// A receptacle's speed reads "40 Gb/s" while a link is up and "Up to 40 Gb/s" when it only says
// what the port could do. Lenient: unknown keys are ignored, odd values become absent.
//
//   auto buses = ThunderboltReport::parse(bytes);            // throws DecodingError
//   const ThunderboltDevice* dock = ThunderboltReport::findSwitch(buses, 0x8087767A25102B00);
#pragma once

#include "common/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvel {

struct ThunderboltPort {
    std::string name;  // "receptacle 1", "upstream"
    std::optional<std::int64_t> linkBitsPerSecond;
    std::optional<std::int64_t> capabilityBitsPerSecond;
    bool isConnected = false;

    bool operator==(const ThunderboltPort&) const = default;
};

struct ThunderboltDevice {
    std::string name;
    std::optional<std::string> vendor;
    std::optional<std::uint64_t> switchUID;
    std::optional<std::string> mode;                // "usb_four", "thunderbolt_three", …
    std::optional<std::int64_t> linkBitsPerSecond;  // its upstream link
    std::vector<ThunderboltPort> ports;             // its downstream receptacles
    std::vector<ThunderboltDevice> children;

    bool operator==(const ThunderboltDevice&) const = default;
};

struct ThunderboltBus {
    std::string name;  // "Thunderbolt/USB4 bus 0"
    std::optional<std::uint64_t> switchUID;
    std::vector<ThunderboltPort> ports;
    std::vector<ThunderboltDevice> devices;

    bool operator==(const ThunderboltBus&) const = default;
};

CORVEL_JSON_RECORD(ThunderboltPort, name, linkBitsPerSecond, capabilityBitsPerSecond, isConnected)
CORVEL_JSON_RECORD(ThunderboltDevice, name, vendor, switchUID, mode, linkBitsPerSecond, ports, children)
CORVEL_JSON_RECORD(ThunderboltBus, name, switchUID, ports, devices)

namespace ThunderboltReport {

inline constexpr const char* key = "SPThunderboltDataType";

std::vector<ThunderboltBus> parse(std::string_view json);
std::vector<ThunderboltBus> fromDocument(const Json& document);

// "thunderboltusb4_bus_0" → "Thunderbolt/USB4 bus 0"; "thunderbolt_bus" → "Thunderbolt bus".
std::string busLabel(std::string_view rawName);
// "0x8087767A25102B00"
std::optional<std::uint64_t> parseUID(std::string_view text);
// "Thunderbolt 4 Docking Station (usb_four)": the mode as people say it.
std::string modeText(std::string_view mode);

struct Located {
    const ThunderboltBus* bus = nullptr;
    std::vector<const ThunderboltDevice*> chain;  // from the bus's first device down to the match
};
// The device with this switch UID and the devices on the way to it.
std::optional<Located> findSwitch(const std::vector<ThunderboltBus>& buses, std::uint64_t switchUID);
// The devices attached anywhere, depth first.
std::vector<Located> connectedDevices(const std::vector<ThunderboltBus>& buses);

}  // namespace ThunderboltReport
}  // namespace corvel
