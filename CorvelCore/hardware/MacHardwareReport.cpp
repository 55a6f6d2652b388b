#include "hardware/MacHardwareReport.h"

#include "common/Text.h"
#include "topology/USBHostReport.h"

#include <charconv>
#include <cmath>

namespace corvel::MacHardwareReport {
namespace {

std::optional<std::string> textOf(const Json& entry, const char* key) {
    if (!entry.is_object()) return std::nullopt;
    const auto found = entry.find(key);
    if (found == entry.end() || !found->is_string()) return std::nullopt;
    auto text = std::string(trim(found->get_ref<const std::string&>()));
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<long long> integerOf(const Json& entry, const char* key) {
    if (!entry.is_object()) return std::nullopt;
    const auto found = entry.find(key);
    if (found == entry.end()) return std::nullopt;
    if (found->is_number_integer()) return found->get<long long>();
    if (!found->is_string()) return std::nullopt;
    const std::string_view text = trim(found->get_ref<const std::string&>());
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

const Json& section(const Json& document, const char* key) {
    static const Json empty = Json::array();
    const auto found = document.find(key);
    return found != document.end() && found->is_array() ? *found : empty;
}

void readHardware(const Json& entry, HardwareSummary& summary) {
    summary.model = textOf(entry, "machine_name");
    summary.modelIdentifier = textOf(entry, "machine_model");
    summary.vendor = "Apple";
    // Apple silicon names its chip; Intel Macs name a processor type instead.
    summary.chip = textOf(entry, "chip_type");
    if (!summary.chip || summary.chip == std::optional<std::string>("Unknown"))
        summary.chip = textOf(entry, "cpu_type");
    if (auto count = integerOf(entry, "number_processors"); count && *count > 0) {
        summary.processorCount = static_cast<int>(*count);
    } else if (auto text = textOf(entry, "number_processors"); text && startsWith(*text, "proc ")) {
        // Apple silicon writes "proc 10:4:6": all cores, then performance and efficiency cores.
        const auto parts = split(text->substr(5), ':');
        int total = 0;
        const auto [end, error] = std::from_chars(parts[0].data(), parts[0].data() + parts[0].size(), total);
        if (error == std::errc() && end == parts[0].data() + parts[0].size() && total > 0)
            summary.processorCount = total;
    }
    if (auto memory = textOf(entry, "physical_memory")) summary.memoryBytes = parseMemory(*memory);
}

std::optional<BatteryHealth> readBattery(const Json& power) {
    for (const auto& entry : power) {
        if (!entry.is_object()) continue;
        const auto health = entry.find("sppower_battery_health_info");
        const auto charge = entry.find("sppower_battery_charge_info");
        if (health == entry.end() && charge == entry.end()) continue;
        BatteryHealth battery;
        if (health != entry.end()) {
            if (auto cycles = integerOf(*health, "sppower_battery_cycle_count"); cycles && *cycles >= 0)
                battery.cycleCount = static_cast<int>(*cycles);
            battery.condition = textOf(*health, "sppower_battery_health");
            if (auto maximum = textOf(*health, "sppower_battery_health_maximum_capacity"))
                battery.capacityFraction = parsePercent(*maximum);
        }
        if (charge != entry.end()) {
            if (auto level = integerOf(*charge, "sppower_battery_state_of_charge");
                level && *level >= 0 && *level <= 100)
                battery.chargePercent = static_cast<int>(*level);
            if (auto charging = textOf(*charge, "sppower_battery_is_charging"))
                battery.isCharging = toLower(*charging) == "true" || toLower(*charging) == "yes";
        }
        return battery;
    }
    return std::nullopt;
}

std::vector<DisplayInfo> readDisplays(const Json& graphics) {
    std::vector<DisplayInfo> displays;
    for (const auto& gpu : graphics) {
        if (!gpu.is_object()) continue;
        const auto screens = gpu.find("spdisplays_ndrvs");
        if (screens == gpu.end() || !screens->is_array()) continue;
        for (const auto& screen : *screens) {
            auto name = textOf(screen, "_name");
            if (!name) continue;
            DisplayInfo display;
            display.name = *name;
            display.resolution = textOf(screen, "_spdisplays_pixels");
            if (!display.resolution) display.resolution = textOf(screen, "_spdisplays_resolution");
            if (!display.resolution) display.resolution = textOf(screen, "spdisplays_resolution");
            if (textOf(screen, "spdisplays_connection_type") == std::optional<std::string>("spdisplays_internal"))
                display.connection = "built-in";
            display.isMain = textOf(screen, "spdisplays_main") == std::optional<std::string>("spdisplays_yes");
            displays.push_back(std::move(display));
        }
    }
    return displays;
}

}  // namespace

std::optional<std::int64_t> parseMemory(std::string_view text) {
    text = trim(text);
    struct Unit {
        std::string_view suffix;
        std::int64_t size;
    };
    for (const Unit unit : {Unit{"TB", 1LL << 40}, Unit{"GB", 1LL << 30}, Unit{"MB", 1LL << 20}}) {
        if (!endsWith(text, unit.suffix)) continue;
        const auto number = trim(text.substr(0, text.size() - unit.suffix.size()));
        long long value = 0;
        const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
        if (number.empty() || error != std::errc() || end != number.data() + number.size() || value <= 0 ||
            value > (1LL << 62) / unit.size)
            return std::nullopt;
        return value * unit.size;
    }
    return std::nullopt;
}

std::optional<double> parsePercent(std::string_view text) {
    text = trim(text);
    if (!endsWith(text, "%")) return std::nullopt;
    const auto number = trim(text.substr(0, text.size() - 1));
    int value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (number.empty() || error != std::errc() || end != number.data() + number.size() || value < 0 || value > 200)
        return std::nullopt;
    return value / 100.0;
}

HardwareSummary fromDocument(const Json& document) {
    if (!document.is_object()) throw DecodingError("the hardware report is not a JSON object");
    if (!document.contains("SPHardwareDataType")) throw DecodingError("missing key 'SPHardwareDataType'");
    HardwareSummary summary;
    for (const auto& entry : section(document, "SPHardwareDataType")) {
        if (!entry.is_object()) continue;
        readHardware(entry, summary);
        break;
    }
    summary.battery = readBattery(section(document, "SPPowerDataType"));
    summary.displays = readDisplays(section(document, "SPDisplaysDataType"));
    if (document.contains(USBHostReport::key)) {
        const auto buses = USBHostReport::fromDocument(document);
        // Hubs only pass traffic on; the devices are what someone plugged in.
        for (const auto* device : USBHostReport::devices(buses))
            if (device->children.empty())
                summary.usbDevices.push_back({device->name, device->vendor, device->linkBitsPerSecond});
    }
    return summary;
}

HardwareSummary parse(std::string_view json) {
    return fromDocument(parseJsonText(json, "the hardware report"));
}

}  // namespace corvel::MacHardwareReport
