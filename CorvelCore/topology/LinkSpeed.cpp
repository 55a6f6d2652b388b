#include "topology/LinkSpeed.h"

#include "common/Text.h"

#include <fmt/format.h>
#include <array>
#include <charconv>
#include <cmath>

namespace corvel::LinkSpeed {
namespace {

// A plain non-negative decimal ("480", "1.5"); absent for anything else.
std::optional<double> decimal(std::string_view text) {
    text = trim(text);
    if (text.empty()) return std::nullopt;
    bool seenPoint = false;
    for (const char c : text) {
        if (c == '.' && !seenPoint) {
            seenPoint = true;
            continue;
        }
        if (c < '0' || c > '9') return std::nullopt;
    }
    if (text.front() == '.' || text.back() == '.') return std::nullopt;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<std::int64_t> scaled(double value, double unit) {
    const double bits = value * unit;
    if (!std::isfinite(bits) || bits <= 0 || bits > 1e15) return std::nullopt;
    return static_cast<std::int64_t>(std::llround(bits));
}

}  // namespace

std::optional<std::int64_t> parseRate(std::string_view text) {
    struct Unit {
        std::string_view suffix;
        double size;
    };
    static constexpr std::array<Unit, 3> units{{{"Gb/s", 1e9}, {"Mb/s", 1e6}, {"kb/s", 1e3}}};
    text = trim(text);
    for (const auto& unit : units) {
        if (!endsWith(text, unit.suffix)) continue;
        const auto number = decimal(text.substr(0, text.size() - unit.suffix.size()));
        if (!number) return std::nullopt;
        return scaled(*number, unit.size);
    }
    return std::nullopt;
}

Reported parseReported(std::string_view text) {
    text = trim(text);
    if (startsWith(text, "Up to ")) return {std::nullopt, parseRate(text.substr(6))};
    return {parseRate(text), std::nullopt};
}

std::optional<std::int64_t> fromLinuxUSB(std::string_view speedFile) {
    const auto megabits = decimal(speedFile);
    if (!megabits) return std::nullopt;
    return scaled(*megabits, 1e6);
}

std::optional<std::int64_t> fromSATA(std::string_view spdFile) {
    spdFile = trim(spdFile);
    if (!endsWith(spdFile, "Gbps")) return std::nullopt;
    const auto gigabits = decimal(spdFile.substr(0, spdFile.size() - 4));
    if (!gigabits) return std::nullopt;
    return scaled(*gigabits, 1e9);
}

std::optional<int> usbVersion(std::string_view versionFile) {
    // " 3.20": major before the point, then two digits of binary-coded decimal.
    versionFile = trim(versionFile);
    const auto point = versionFile.find('.');
    if (point == std::string_view::npos || point == 0 || point > 2 || versionFile.size() != point + 3)
        return std::nullopt;
    int bcd = 0;
    for (const char c : versionFile) {
        if (c == '.') continue;
        if (c < '0' || c > '9') return std::nullopt;
        bcd = bcd * 16 + (c - '0');
    }
    return bcd;
}

std::string usbVersionText(int bcd) {
    const int major = (bcd >> 8 & 0xF) + 10 * (bcd >> 12 & 0xF);
    const int minor = bcd >> 4 & 0xF;
    return fmt::format("USB {}.{}", major, minor);
}

std::optional<std::int64_t> usbVersionCapability(int bcd) {
    const int major = (bcd >> 8 & 0xF) + 10 * (bcd >> 12 & 0xF);
    if (major == 1) return 12'000'000;
    if (major == 2) return usb2;
    if (major >= 3 && major <= 4) return usb3;
    return std::nullopt;
}

std::optional<std::int64_t> usbBusCapability(std::string_view busName) {
    const std::string name = toLower(busName);
    if (!contains(name, "usb")) return std::nullopt;
    if (contains(name, "3.1") || contains(name, "usb31") || contains(name, "3.2") || contains(name, "usb32"))
        return 10'000'000'000;
    if (contains(name, "3.0") || contains(name, "usb30")) return usb3;
    if (contains(name, "2.0") || contains(name, "usb20")) return usb2;
    return std::nullopt;
}

std::optional<std::int64_t> fromRegistryDeviceSpeed(long long value) {
    static constexpr std::array<std::int64_t, 6> speeds{1'500'000, 12'000'000,     usb2,
                                                        usb3,      10'000'000'000, 20'000'000'000};
    if (value < 0 || value >= static_cast<long long>(speeds.size())) return std::nullopt;
    return speeds[static_cast<std::size_t>(value)];
}

std::optional<std::int64_t> fromRegistryUSBSpeed(long long value) {
    static constexpr std::array<std::int64_t, 6> speeds{12'000'000, 1'500'000,      usb2,
                                                        usb3,       10'000'000'000, 20'000'000'000};
    if (value < 1 || value > static_cast<long long>(speeds.size())) return std::nullopt;
    return speeds[static_cast<std::size_t>(value - 1)];
}

}  // namespace corvel::LinkSpeed
