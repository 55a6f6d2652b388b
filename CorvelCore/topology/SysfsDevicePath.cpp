#include "topology/SysfsDevicePath.h"

#include "common/Text.h"

#include <array>
#include <cctype>

namespace corvel::SysfsDevicePath {
namespace {

bool allOf(std::string_view text, int (*test)(int)) {
    if (text.empty()) return false;
    for (const char c : text)
        if (!test(static_cast<unsigned char>(c))) return false;
    return true;
}

bool isDigits(std::string_view text) {
    return allOf(text, [](int c) { return std::isdigit(c); });
}

bool isHex(std::string_view text) {
    return allOf(text, [](int c) { return std::isxdigit(c); });
}

bool numbered(std::string_view name, std::string_view prefix) {
    return startsWith(name, prefix) && isDigits(name.substr(prefix.size()));
}

// "0000:00:14.0": domain, bus, device and function.
bool isPCIAddress(std::string_view name) {
    if (name.size() != 12 || name[4] != ':' || name[7] != ':' || name[10] != '.') return false;
    return isHex(name.substr(0, 4)) && isHex(name.substr(5, 2)) && isHex(name.substr(8, 2)) &&
           isDigits(name.substr(11));
}

// "2-1" or "2-1.4.3": bus, then port numbers.
bool isUSBDevice(std::string_view name) {
    const auto dash = name.find('-');
    if (dash == std::string_view::npos || !isDigits(name.substr(0, dash))) return false;
    for (const auto& port : split(name.substr(dash + 1), '.'))
        if (!isDigits(port)) return false;
    return true;
}

}  // namespace

Kind kindOf(std::string_view name) {
    if (startsWith(name, "pci") && name.size() > 3 && name.find(':') != std::string_view::npos) return Kind::pciRoot;
    if (isPCIAddress(name)) return Kind::pci;
    if (numbered(name, "usb")) return Kind::usbRoot;
    if (const auto colon = name.find(':'); colon != std::string_view::npos && isUSBDevice(name.substr(0, colon)))
        return Kind::usbInterface;
    if (isUSBDevice(name)) return Kind::usb;
    if (numbered(name, "ata")) return Kind::ata;
    if (numbered(name, "nvme")) return Kind::nvme;
    if (numbered(name, "virtio")) return Kind::virtio;
    return Kind::other;
}

std::vector<Part> decode(std::string_view devicePath) {
    std::vector<Part> parts;
    const std::string_view prefix = "/sys/devices/";
    if (!startsWith(devicePath, prefix)) return parts;
    std::string folder(prefix.substr(0, prefix.size() - 1));
    for (const auto& name : split(devicePath.substr(prefix.size()), '/')) {
        if (name.empty()) continue;
        folder += "/" + name;
        parts.push_back({kindOf(name), name, folder});
    }
    return parts;
}

int usbBus(std::string_view name) {
    std::string_view digits;
    if (numbered(name, "usb")) {
        digits = name.substr(3);
    } else if (isUSBDevice(name)) {
        digits = name.substr(0, name.find('-'));
    } else {
        return -1;
    }
    if (digits.size() > 4) return -1;
    return std::stoi(std::string(digits));
}

bool isDirectUSBChild(std::string_view hub, std::string_view child) {
    if (!isUSBDevice(child)) return false;
    if (numbered(hub, "usb")) {
        // "usb2" holds "2-1", "2-2", …: a bus and one port number.
        return usbBus(child) == usbBus(hub) && child.find('.') == std::string_view::npos;
    }
    if (!isUSBDevice(hub) || !startsWith(child, hub) || child.size() <= hub.size() + 1 || child[hub.size()] != '.')
        return false;
    return isDigits(child.substr(hub.size() + 1));
}

std::string pciClassName(std::string_view classFile) {
    struct Entry {
        std::string_view prefix;  // class and subclass, hex
        std::string_view name;
    };
    static constexpr std::array<Entry, 8> classes{{
        {"0x0108", "NVMe controller"},
        {"0x0106", "SATA controller"},
        {"0x0104", "RAID controller"},
        {"0x0107", "SAS controller"},
        {"0x0c03", "USB controller"},
        {"0x0c0a", "USB4 host interface"},
        {"0x0604", "PCIe bridge"},
        {"0x01", "Storage controller"},
    }};
    const std::string text = toLower(trim(classFile));
    for (const auto& entry : classes)
        if (startsWith(text, entry.prefix)) return std::string(entry.name);
    return "PCI device";
}

}  // namespace corvel::SysfsDevicePath
