// Link speeds as the platforms print them, decoded to bits per second. Every decoder is lenient:
// text it does not recognise gives an absent speed, never an error, because a rule must not fire
// on a speed nobody reported.
//
//   LinkSpeed::parseReported("480 Mb/s").current == 480'000'000
//   LinkSpeed::parseReported("Up to 40 Gb/s").upTo == 40'000'000'000
//   LinkSpeed::fromLinuxUSB("5000") == 5'000'000'000;  LinkSpeed::fromSATA("1.5 Gbps") == 1'500'000'000
//   LinkSpeed::usbVersion(" 3.20") == 0x0320;  LinkSpeed::usbVersionCapability(0x0320) == 5'000'000'000
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvel::LinkSpeed {

inline constexpr std::int64_t usb2 = 480'000'000;
inline constexpr std::int64_t usb3 = 5'000'000'000;

// "N Gb/s", "N Mb/s" or "N kb/s" (decimal units, N may have a fraction).
std::optional<std::int64_t> parseRate(std::string_view text);

// A hardware report's speed: "40 Gb/s" is a link that is up, "Up to 40 Gb/s" only what the
// receptacle could do.
struct Reported {
    std::optional<std::int64_t> current;
    std::optional<std::int64_t> upTo;
};
Reported parseReported(std::string_view text);

// The `speed` file of a Linux USB device, in Mb/s: "1.5", "12", "480", "5000", "10000", "20000".
std::optional<std::int64_t> fromLinuxUSB(std::string_view speedFile);

// The `sata_spd` file of a Linux ATA link: "1.5 Gbps", "3.0 Gbps", "6.0 Gbps" ("<unknown>" is absent).
std::optional<std::int64_t> fromSATA(std::string_view spdFile);

// A USB version as binary-coded decimal (0x0320 for USB 3.2), from the `version` file (" 3.20").
std::optional<int> usbVersion(std::string_view versionFile);
// "USB 3.2", "USB 2.0".
std::string usbVersionText(int bcd);
// The least a device declaring this version can do: 12 Mb/s for 1.x, 480 Mb/s for 2.x and 5 Gb/s
// from 3.0 on (a 3.x device may do 10 or 20 Gb/s, which the version alone does not say).
std::optional<std::int64_t> usbVersionCapability(int bcd);

// What a USB bus or root hub named by the hardware report can do: "USB 3.1 Bus" 10 Gb/s,
// "USB 3.0 Bus" or "USB30Bus" 5 Gb/s, "USB 2.0 Bus" 480 Mb/s.
std::optional<std::int64_t> usbBusCapability(std::string_view busName);

// The I/O registry's USB speed numbers. "Device Speed" counts 0 low, 1 full, 2 high, 3 super,
// 4 super+ (10 Gb/s), 5 super+ 2x2 (20 Gb/s); "USBSpeed" follows the xHCI numbering instead:
// 1 full, 2 low, 3 high, 4 super, 5 super+, 6 super+ 2x2 (0: nothing connected).
std::optional<std::int64_t> fromRegistryDeviceSpeed(long long value);
std::optional<std::int64_t> fromRegistryUSBSpeed(long long value);

}  // namespace corvel::LinkSpeed
