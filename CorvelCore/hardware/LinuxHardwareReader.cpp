#include "hardware/LinuxHardwareReader.h"

#include "common/Text.h"
#include "topology/LinkSpeed.h"
#include "topology/SysfsDevicePath.h"

#include <array>
#include <charconv>

namespace corvel::LinuxHardwareReader {
namespace {

std::optional<std::string> text(SysfsReading& sysfs, const std::string& path) {
    auto contents = sysfs.read(path);
    if (!contents) return std::nullopt;
    auto trimmed = std::string(trim(*contents));
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::optional<long long> integer(std::string_view value) {
    value = trim(value);
    long long number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (value.empty() || error != std::errc() || end != value.data() + value.size()) return std::nullopt;
    return number;
}

std::optional<long long> field(const std::map<std::string, std::string>& uevent, const char* key) {
    const auto found = uevent.find(key);
    if (found == uevent.end()) return std::nullopt;
    return integer(found->second);
}

std::optional<std::string> dmi(SysfsReading& sysfs, const char* name) {
    auto value = text(sysfs, std::string("/sys/class/dmi/id/") + name);
    if (!value || isPlaceholder(*value)) return std::nullopt;
    return value;
}

void readDisplays(SysfsReading& sysfs, HardwareSummary& summary) {
    for (const auto& name : sysfs.list("/sys/class/drm")) {
        // Connectors are "card0-eDP-1", "card1-HDMI-A-1"; "card0" alone is the graphics card.
        const auto dash = name.find('-');
        if (!startsWith(name, "card") || dash == std::string::npos) continue;
        const std::string folder = "/sys/class/drm/" + name;
        if (text(sysfs, folder + "/status") != std::optional<std::string>("connected")) continue;
        DisplayInfo display;
        display.name = name.substr(dash + 1);
        if (auto modes = text(sysfs, folder + "/modes")) display.resolution = split(*modes, '\n').front();
        const std::string connector = display.name.substr(0, display.name.rfind('-'));
        const bool builtIn = connector == "eDP" || connector == "LVDS" || connector == "DSI";
        display.connection = builtIn ? std::string("built-in") : connector;
        summary.displays.push_back(std::move(display));
    }
}

void readUSB(SysfsReading& sysfs, HardwareSummary& summary) {
    for (const auto& name : sysfs.list("/sys/bus/usb/devices")) {
        if (SysfsDevicePath::kindOf(name) != SysfsDevicePath::Kind::usb) continue;
        const std::string folder = "/sys/bus/usb/devices/" + name;
        // Hubs (device class 09) only pass traffic on.
        if (text(sysfs, folder + "/bDeviceClass") == std::optional<std::string>("09")) continue;
        USBDeviceInfo device;
        device.vendor = text(sysfs, folder + "/manufacturer");
        device.name = text(sysfs, folder + "/product").value_or("USB device " + name);
        if (auto speed = text(sysfs, folder + "/speed")) device.linkBitsPerSecond = LinkSpeed::fromLinuxUSB(*speed);
        summary.usbDevices.push_back(std::move(device));
    }
}

}  // namespace

bool isPlaceholder(std::string_view dmiText) {
    static constexpr std::array<std::string_view, 8> placeholders{
        "to be filled by o.e.m.", "default string", "system product name", "system manufacturer",
        "system version",         "not applicable", "not specified",       "none"};
    const std::string lower = toLower(trim(dmiText));
    for (const auto placeholder : placeholders)
        if (lower == placeholder) return true;
    return lower.empty();
}

std::map<std::string, std::string> parseUevent(std::string_view text) {
    std::map<std::string, std::string> fields;
    for (const auto& line : split(text, '\n')) {
        const auto equals = line.find('=');
        if (equals == std::string::npos || equals == 0) continue;
        fields[line.substr(0, equals)] = std::string(trim(std::string_view(line).substr(equals + 1)));
    }
    return fields;
}

std::optional<BatteryHealth> batteryFromUevent(const std::map<std::string, std::string>& uevent) {
    const auto type = uevent.find("POWER_SUPPLY_TYPE");
    if (type == uevent.end() || type->second != "Battery") return std::nullopt;
    // Peripherals (a mouse, a headset) report batteries too; only the machine's own counts.
    if (const auto scope = uevent.find("POWER_SUPPLY_SCOPE"); scope != uevent.end() && scope->second == "Device")
        return std::nullopt;
    if (field(uevent, "POWER_SUPPLY_PRESENT") == 0) return std::nullopt;
    BatteryHealth battery;
    if (auto cycles = field(uevent, "POWER_SUPPLY_CYCLE_COUNT"); cycles && *cycles >= 0)
        battery.cycleCount = static_cast<int>(*cycles);
    if (const auto health = uevent.find("POWER_SUPPLY_HEALTH"); health != uevent.end() && health->second != "Unknown")
        battery.condition = health->second;
    // Energy (µWh) when the battery reports it, else charge (µAh).
    struct Pair {
        const char* full;
        const char* design;
        const char* unit;
    };
    for (const Pair pair : {Pair{"POWER_SUPPLY_ENERGY_FULL", "POWER_SUPPLY_ENERGY_FULL_DESIGN", "mWh"},
                            Pair{"POWER_SUPPLY_CHARGE_FULL", "POWER_SUPPLY_CHARGE_FULL_DESIGN", "mAh"}}) {
        const auto full = field(uevent, pair.full);
        const auto design = field(uevent, pair.design);
        if (!full || !design || *full <= 0 || *design <= 0) continue;
        battery.fullChargeCapacity = *full / 1000;
        battery.designCapacity = *design / 1000;
        battery.capacityUnit = pair.unit;
        battery.capacityFraction = static_cast<double>(*full) / static_cast<double>(*design);
        break;
    }
    if (auto level = field(uevent, "POWER_SUPPLY_CAPACITY"); level && *level >= 0 && *level <= 100)
        battery.chargePercent = static_cast<int>(*level);
    if (const auto status = uevent.find("POWER_SUPPLY_STATUS"); status != uevent.end() && status->second != "Unknown")
        battery.isCharging = status->second == "Charging";
    return battery;
}

std::optional<std::int64_t> memoryFromMeminfo(std::string_view text) {
    for (const auto& line : split(text, '\n')) {
        if (!startsWith(line, "MemTotal:")) continue;
        std::string_view value = trim(std::string_view(line).substr(9));
        if (!endsWith(value, "kB")) return std::nullopt;
        const auto kibibytes = integer(value.substr(0, value.size() - 2));
        if (!kibibytes || *kibibytes <= 0 || *kibibytes > (1LL << 52)) return std::nullopt;
        return *kibibytes * 1024;
    }
    return std::nullopt;
}

std::pair<std::optional<std::string>, std::optional<int>> cpuFromCpuinfo(std::string_view text) {
    std::optional<std::string> model;
    int processors = 0;
    for (const auto& line : split(text, '\n')) {
        const auto colon = line.find(':');
        if (colon == std::string::npos) continue;
        const auto key = trim(std::string_view(line).substr(0, colon));
        const auto value = trim(std::string_view(line).substr(colon + 1));
        if (key == "processor") ++processors;
        if (key == "model name" && !model && !value.empty()) model = std::string(value);
    }
    return {model, processors > 0 ? std::optional<int>(processors) : std::nullopt};
}

HardwareSummary read(SysfsReading& sysfs) {
    HardwareSummary summary;
    summary.vendor = dmi(sysfs, "sys_vendor");
    summary.model = dmi(sysfs, "product_name");
    summary.modelIdentifier = dmi(sysfs, "product_version");
    if (auto cpuinfo = sysfs.read("/proc/cpuinfo"))
        std::tie(summary.chip, summary.processorCount) = cpuFromCpuinfo(*cpuinfo);
    if (auto meminfo = sysfs.read("/proc/meminfo")) summary.memoryBytes = memoryFromMeminfo(*meminfo);
    for (const auto& name : sysfs.list("/sys/class/power_supply")) {
        const auto uevent = sysfs.read("/sys/class/power_supply/" + name + "/uevent");
        if (!uevent) continue;
        if (auto battery = batteryFromUevent(parseUevent(*uevent))) {
            summary.battery = battery;
            break;
        }
    }
    readDisplays(sysfs, summary);
    readUSB(sysfs, summary);
    summary.warnings = sysfs.warnings();
    return summary;
}

}  // namespace corvel::LinuxHardwareReader
