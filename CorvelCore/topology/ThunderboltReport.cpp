#include "topology/ThunderboltReport.h"

#include "common/Text.h"
#include "topology/LinkSpeed.h"

#include <array>
#include <charconv>
#include <functional>

namespace corvel::ThunderboltReport {
namespace {

std::optional<std::string> textOf(const Json& entry, const char* key) {
    const auto found = entry.find(key);
    if (found == entry.end() || !found->is_string()) return std::nullopt;
    auto text = std::string(trim(found->get_ref<const std::string&>()));
    if (text.empty()) return std::nullopt;
    return text;
}

ThunderboltPort port(const std::string& key, const Json& tag) {
    ThunderboltPort result;
    // "receptacle_1_tag" → "receptacle 1"; "receptacle_upstream_ambiguous_tag" → "upstream".
    std::string name = key.substr(0, key.size() - 4);
    if (contains(name, "upstream")) name = "upstream";
    result.name = replaceAll(name, "_", " ");
    if (auto speed = textOf(tag, "current_speed_key")) {
        const auto reported = LinkSpeed::parseReported(*speed);
        result.linkBitsPerSecond = reported.current;
        result.capabilityBitsPerSecond = reported.upTo;
    }
    result.isConnected = textOf(tag, "receptacle_status_key") == std::optional<std::string>("receptacle_connected");
    // A live link with no "Up to" says nothing about more; an idle one says nothing about now.
    if (!result.isConnected) result.linkBitsPerSecond.reset();
    return result;
}

std::vector<ThunderboltPort> ports(const Json& entry, std::optional<ThunderboltPort>* upstream) {
    std::vector<ThunderboltPort> result;
    for (const auto& [key, value] : entry.items()) {
        if (!startsWith(key, "receptacle_") || !endsWith(key, "_tag") || !value.is_object()) continue;
        auto found = port(key, value);
        if (found.name == "upstream") {
            if (upstream) *upstream = found;
            continue;
        }
        result.push_back(std::move(found));
    }
    return result;
}

std::optional<ThunderboltDevice> device(const Json& entry, int depth) {
    if (!entry.is_object() || depth > 16) return std::nullopt;
    // Items without a switch of their own are services a peer offers (networking, …), not devices.
    if (!entry.contains("switch_uid_key") && !entry.contains("receptacle_upstream_ambiguous_tag")) return std::nullopt;
    auto name = textOf(entry, "_name");
    if (!name) name = textOf(entry, "device_name_key");
    if (!name) return std::nullopt;
    ThunderboltDevice result;
    result.name = *name;
    result.vendor = textOf(entry, "vendor_name_key");
    if (auto uid = textOf(entry, "switch_uid_key")) result.switchUID = parseUID(*uid);
    result.mode = textOf(entry, "mode_key");
    std::optional<ThunderboltPort> upstream;
    result.ports = ports(entry, &upstream);
    if (upstream) result.linkBitsPerSecond = upstream->linkBitsPerSecond;
    if (const auto items = entry.find("_items"); items != entry.end() && items->is_array())
        for (const auto& item : *items)
            if (auto child = device(item, depth + 1)) result.children.push_back(std::move(*child));
    return result;
}

}  // namespace

std::string busLabel(std::string_view rawName) {
    std::string name(rawName);
    std::string number;
    if (const auto underscore = name.rfind("_bus_"); underscore != std::string::npos) {
        number = name.substr(underscore + 5);
        name = name.substr(0, underscore);
    } else if (endsWith(name, "_bus")) {
        name = name.substr(0, name.size() - 4);
    } else {
        return name;
    }
    const std::string kind = name == "thunderboltusb4" ? "Thunderbolt/USB4"
                             : name == "thunderbolt"   ? "Thunderbolt"
                                                       : name;
    return kind + " bus" + (number.empty() ? "" : " " + number);
}

std::optional<std::uint64_t> parseUID(std::string_view text) {
    text = trim(text);
    if (!startsWith(text, "0x") && !startsWith(text, "0X")) return std::nullopt;
    text.remove_prefix(2);
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string modeText(std::string_view mode) {
    struct Entry {
        std::string_view raw;
        std::string_view text;
    };
    static constexpr std::array<Entry, 5> modes{{
        {"thunderbolt_one", "Thunderbolt 1"},
        {"thunderbolt_two", "Thunderbolt 2"},
        {"thunderbolt_three", "Thunderbolt 3"},
        {"usb_four", "USB4"},
        {"usb_four_v2", "USB4 v2"},
    }};
    for (const auto& entry : modes)
        if (entry.raw == mode) return std::string(entry.text);
    return std::string(mode);
}

std::vector<ThunderboltBus> fromDocument(const Json& document) {
    if (!document.is_object()) throw DecodingError("the Thunderbolt report is not a JSON object");
    const auto report = document.find(key);
    if (report == document.end()) throw DecodingError(std::string("missing key '") + key + "'");
    std::vector<ThunderboltBus> buses;
    if (!report->is_array()) return buses;
    for (const auto& entry : *report) {
        if (!entry.is_object()) continue;
        auto name = textOf(entry, "_name");
        if (!name) continue;
        ThunderboltBus bus;
        bus.name = busLabel(*name);
        if (auto uid = textOf(entry, "switch_uid_key")) bus.switchUID = parseUID(*uid);
        bus.ports = ports(entry, nullptr);
        if (const auto items = entry.find("_items"); items != entry.end() && items->is_array())
            for (const auto& item : *items)
                if (auto found = device(item, 1)) bus.devices.push_back(std::move(*found));
        buses.push_back(std::move(bus));
    }
    return buses;
}

std::vector<ThunderboltBus> parse(std::string_view json) {
    return fromDocument(parseJsonText(json, "the Thunderbolt report"));
}

std::vector<Located> connectedDevices(const std::vector<ThunderboltBus>& buses) {
    std::vector<Located> found;
    for (const auto& bus : buses) {
        std::vector<const ThunderboltDevice*> chain;
        std::function<void(const ThunderboltDevice&)> visit = [&](const ThunderboltDevice& current) {
            chain.push_back(&current);
            found.push_back({&bus, chain});
            for (const auto& child : current.children) visit(child);
            chain.pop_back();
        };
        for (const auto& top : bus.devices) visit(top);
    }
    return found;
}

std::optional<Located> findSwitch(const std::vector<ThunderboltBus>& buses, std::uint64_t switchUID) {
    for (auto& located : connectedDevices(buses))
        if (located.chain.back()->switchUID == switchUID) return located;
    return std::nullopt;
}

}  // namespace corvel::ThunderboltReport
