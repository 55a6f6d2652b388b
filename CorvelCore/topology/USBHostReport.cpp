#include "topology/USBHostReport.h"

#include "common/Text.h"
#include "topology/LinkSpeed.h"

#include <charconv>
#include <functional>

namespace corvel::USBHostReport {
namespace {

std::optional<std::string> textOf(const Json& entry, const char* key) {
    const auto found = entry.find(key);
    if (found == entry.end() || !found->is_string()) return std::nullopt;
    auto text = std::string(trim(found->get_ref<const std::string&>()));
    if (text.empty()) return std::nullopt;
    return text;
}

std::vector<std::string> bsdNamesOf(const Json& entry) {
    std::vector<std::string> names;
    const auto media = entry.find("Media");
    if (media == entry.end() || !media->is_array()) return names;
    for (const auto& medium : *media)
        if (medium.is_object())
            if (auto name = textOf(medium, "bsd_name")) names.push_back(*name);
    return names;
}

std::optional<USBHostNode> node(const Json& entry, int depth) {
    if (!entry.is_object() || depth > 32) return std::nullopt;
    auto name = textOf(entry, "_name");
    if (!name) return std::nullopt;
    USBHostNode result;
    result.name = *name;
    if (auto location = textOf(entry, "USBKeyLocationID")) result.locationID = parseLocationID(*location);
    if (auto speed = textOf(entry, "USBDeviceKeyLinkSpeed")) result.linkBitsPerSecond = LinkSpeed::parseRate(*speed);
    result.vendor = textOf(entry, "USBDeviceKeyVendorName");
    result.vendorID = textOf(entry, "USBDeviceKeyVendorID");
    result.productID = textOf(entry, "USBDeviceKeyProductID");
    result.isTunnelled = textOf(entry, "USBDeviceKeyUSB4Tunnel") == std::optional<std::string>("Yes");
    result.bsdNames = bsdNamesOf(entry);
    if (const auto items = entry.find("_items"); items != entry.end() && items->is_array())
        for (const auto& item : *items)
            if (auto child = node(item, depth + 1)) result.children.push_back(std::move(*child));
    return result;
}

std::vector<const USBHostNode*> search(const std::vector<USBHostNode>& buses,
                                       const std::function<bool(const USBHostNode&)>& matches) {
    std::vector<const USBHostNode*> chain;
    std::function<bool(const USBHostNode&)> visit = [&](const USBHostNode& current) {
        chain.push_back(&current);
        if (matches(current)) return true;
        for (const auto& child : current.children)
            if (visit(child)) return true;
        chain.pop_back();
        return false;
    };
    for (const auto& bus : buses) {
        // A bus carries its own location ID (0x01000000); only devices below it are matched.
        chain.push_back(&bus);
        for (const auto& child : bus.children)
            if (visit(child)) return chain;
        chain.pop_back();
    }
    return {};
}

}  // namespace

std::optional<std::uint32_t> parseLocationID(std::string_view text) {
    text = trim(text);
    // The older report writes "0x14500000 / 4": the location, then the device address.
    if (const auto slash = text.find('/'); slash != std::string_view::npos) text = trim(text.substr(0, slash));
    int base = 10;
    if (startsWith(text, "0x") || startsWith(text, "0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::vector<USBHostNode> fromDocument(const Json& document) {
    if (!document.is_object()) throw DecodingError("the USB host report is not a JSON object");
    const auto report = document.find(key);
    if (report == document.end()) throw DecodingError(std::string("missing key '") + key + "'");
    std::vector<USBHostNode> buses;
    if (!report->is_array()) return buses;
    for (const auto& entry : *report)
        if (auto bus = node(entry, 0)) buses.push_back(std::move(*bus));
    return buses;
}

std::vector<USBHostNode> parse(std::string_view json) {
    return fromDocument(parseJsonText(json, "the USB host report"));
}

std::vector<const USBHostNode*> pathTo(const std::vector<USBHostNode>& buses, std::uint32_t locationID) {
    return search(buses, [locationID](const USBHostNode& n) { return n.locationID == locationID; });
}

std::vector<const USBHostNode*> pathToDisk(const std::vector<USBHostNode>& buses, const std::string& bsdName) {
    return search(buses, [&bsdName](const USBHostNode& n) {
        for (const auto& name : n.bsdNames)
            if (name == bsdName) return true;
        return false;
    });
}

std::vector<const USBHostNode*> devices(const std::vector<USBHostNode>& buses) {
    std::vector<const USBHostNode*> found;
    std::function<void(const USBHostNode&)> visit = [&](const USBHostNode& current) {
        found.push_back(&current);
        for (const auto& child : current.children) visit(child);
    };
    for (const auto& bus : buses)
        for (const auto& child : bus.children) visit(child);
    return found;
}

}  // namespace corvel::USBHostReport
