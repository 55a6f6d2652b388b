#include "storage/LsblkParser.h"

#include <charconv>
#include <limits>

#include "common/Text.h"

namespace corvel::LsblkParser {

namespace {

// Text with its padding removed; absent for null, non-text and blank values (lsblk pads
// vendor names such as "ATA     " to a fixed width).
std::optional<std::string> text(const Json& entry, const char* key) {
    auto it = entry.find(key);
    if (it == entry.end() || !it->is_string()) return std::nullopt;
    std::string trimmed(trim(it->get<std::string>()));
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::optional<std::int64_t> number(const Json& entry, const char* key) {
    auto it = entry.find(key);
    if (it == entry.end()) return std::nullopt;
    if (it->is_number_integer()) return it->get<std::int64_t>();
    if (it->is_number_unsigned()) {
        auto value = it->get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
        return static_cast<std::int64_t>(value);
    }
    if (it->is_string()) {
        // Older releases print every value as text.
        const std::string& digits = it->get_ref<const std::string&>();
        std::int64_t value = 0;
        auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error == std::errc() && end == digits.data() + digits.size() && !digits.empty()) return value;
    }
    return std::nullopt;
}

std::optional<bool> flag(const Json& entry, const char* key) {
    auto it = entry.find(key);
    if (it == entry.end()) return std::nullopt;
    if (it->is_boolean()) return it->get<bool>();
    if (it->is_number_integer()) return it->get<std::int64_t>() != 0;
    if (it->is_string()) {
        const std::string& value = it->get_ref<const std::string&>();
        if (value == "1") return true;
        if (value == "0") return false;
    }
    return std::nullopt;
}

std::vector<std::string> mountPoints(const Json& entry) {
    std::vector<std::string> result;
    auto it = entry.find("mountpoints");
    if (it != entry.end() && it->is_array()) {
        for (const auto& point : *it) {
            if (point.is_string() && !point.get_ref<const std::string&>().empty()) result.push_back(point.get<std::string>());
        }
    } else if (auto single = text(entry, "mountpoint")) {
        result.push_back(*single);
    }
    return result;
}

constexpr int maximumDepth = 64;

std::optional<BlockDevice> decode(const Json& entry, int depth) {
    if (!entry.is_object() || depth > maximumDepth) return std::nullopt;
    auto name = text(entry, "name");
    if (!name) return std::nullopt;

    BlockDevice device;
    device.name = *name;
    device.kernelName = text(entry, "kname").value_or(*name);
    device.path = text(entry, "path").value_or("/dev/" + device.kernelName);
    device.type = text(entry, "type").value_or("");
    device.majorMinor = text(entry, "maj:min");
    device.sizeBytes = number(entry, "size").value_or(0);
    device.vendor = text(entry, "vendor");
    device.model = text(entry, "model");
    device.serial = text(entry, "serial");
    device.transport = text(entry, "tran");
    device.subsystems = text(entry, "subsystems");
    device.isRotational = flag(entry, "rota");
    device.isRemovable = flag(entry, "rm");
    device.isHotplug = flag(entry, "hotplug");
    device.isReadOnly = flag(entry, "ro");
    if (auto sector = number(entry, "phy-sec"); sector && *sector > 0 && *sector <= std::numeric_limits<int>::max()) {
        device.physicalSectorSize = static_cast<int>(*sector);
    }
    device.partitionTableType = text(entry, "pttype");
    device.fileSystemType = text(entry, "fstype");
    device.label = text(entry, "label");
    device.uuid = text(entry, "uuid");
    device.partitionUUID = text(entry, "partuuid");
    device.partitionLabel = text(entry, "partlabel");
    device.partitionTypeName = text(entry, "parttypename");
    device.mountPoints = mountPoints(entry);

    if (auto children = entry.find("children"); children != entry.end() && children->is_array()) {
        for (const auto& child : *children) {
            if (auto decoded = decode(child, depth + 1)) device.children.push_back(std::move(*decoded));
        }
    }
    return device;
}

}  // namespace

std::vector<BlockDevice> parse(std::string_view json) {
    Json document = parseJsonText(json, "lsblk output");
    auto list = document.is_object() ? document.find("blockdevices") : document.end();
    if (!document.is_object() || list == document.end() || !list->is_array()) {
        throw DecodingError("lsblk output: no \"blockdevices\" list");
    }
    std::vector<BlockDevice> devices;
    for (const auto& entry : *list) {
        if (auto device = decode(entry, 0)) devices.push_back(std::move(*device));
    }
    return devices;
}

}  // namespace corvel::LsblkParser
