#include "topology/RegistryPath.h"

#include "common/Text.h"
#include "topology/LinkSpeed.h"

#include <charconv>

namespace corvel::RegistryPath {

std::optional<std::uint64_t> number(const RegistryEntry& entry, const char* key) {
    if (!entry.properties.is_object()) return std::nullopt;
    const auto found = entry.properties.find(key);
    if (found == entry.properties.end()) return std::nullopt;
    if (found->is_number_unsigned()) return found->get<std::uint64_t>();
    if (found->is_number_integer()) {
        const auto value = found->get<std::int64_t>();
        if (value < 0) return std::nullopt;
        return static_cast<std::uint64_t>(value);
    }
    if (!found->is_string()) return std::nullopt;
    std::string_view text = trim(found->get_ref<const std::string&>());
    int base = 10;
    if (startsWith(text, "0x") || startsWith(text, "0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

namespace {

std::optional<std::string> text(const RegistryEntry& entry, const char* key) {
    if (!entry.properties.is_object()) return std::nullopt;
    const auto found = entry.properties.find(key);
    if (found == entry.properties.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::optional<std::uint32_t> register32(const RegistryEntry& entry, const char* key) {
    const auto value = number(entry, key);
    if (!value || *value > 0xFFFFFFFFu) return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

}  // namespace

std::optional<USBDevice> usbDevice(const std::vector<RegistryEntry>& chain) {
    for (const auto& entry : chain) {
        const auto location = number(entry, "locationID");
        const auto deviceSpeed = number(entry, "Device Speed");
        const auto usbSpeed = number(entry, "USBSpeed");
        const auto version = number(entry, "bcdUSB");
        if (!location || (!deviceSpeed && !usbSpeed && !version)) continue;
        USBDevice device;
        device.name = text(entry, "USB Product Name").value_or(entry.name);
        if (*location <= 0xFFFFFFFFu) device.locationID = static_cast<std::uint32_t>(*location);
        // "Device Speed" is what the family publishes for the link; "USBSpeed" is the fallback.
        if (deviceSpeed)
            device.linkBitsPerSecond = LinkSpeed::fromRegistryDeviceSpeed(static_cast<long long>(*deviceSpeed));
        if (!device.linkBitsPerSecond && usbSpeed)
            device.linkBitsPerSecond = LinkSpeed::fromRegistryUSBSpeed(static_cast<long long>(*usbSpeed));
        if (version && *version <= 0xFFFF) device.usbVersion = static_cast<int>(*version);
        return device;
    }
    return std::nullopt;
}

std::optional<PCIeDevice> pcieDevice(const std::vector<RegistryEntry>& chain) {
    for (std::size_t i = 0; i < chain.size(); ++i) {
        const auto status = register32(chain[i], "IOPCIExpressLinkStatus");
        if (!status) continue;
        PCIeDevice device{chain[i].name, i, PCIeLink::fromLinkStatus(*status), std::nullopt};
        if (const auto capabilities = register32(chain[i], "IOPCIExpressLinkCapabilities"))
            device.maximum = PCIeLink::fromLinkCapabilities(*capabilities);
        return device;
    }
    return std::nullopt;
}

std::optional<PCIeDevice> upstreamPort(const std::vector<RegistryEntry>& chain, const PCIeDevice& after) {
    for (std::size_t i = after.index + 1; i < chain.size(); ++i) {
        const auto capabilities = register32(chain[i], "IOPCIExpressLinkCapabilities");
        if (!capabilities) continue;
        PCIeDevice port{chain[i].name, i, std::nullopt, PCIeLink::fromLinkCapabilities(*capabilities)};
        if (const auto status = register32(chain[i], "IOPCIExpressLinkStatus"))
            port.current = PCIeLink::fromLinkStatus(*status);
        return port;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> thunderboltSwitch(const std::vector<RegistryEntry>& chain) {
    for (const auto& entry : chain)
        if (contains(entry.className, "ThunderboltSwitch"))
            if (auto uid = number(entry, "UID")) return uid;
    return std::nullopt;
}

bool isAppleFabric(const std::vector<RegistryEntry>& chain) {
    for (const auto& entry : chain)
        if (startsWith(entry.className, "AppleANS")) return true;
    return false;
}

}  // namespace corvel::RegistryPath
