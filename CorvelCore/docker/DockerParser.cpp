#include "docker/DockerParser.h"

#include "common/CheckedArithmetic.h"
#include "common/Text.h"
#include "storage/DiskutilParseError.h"

#include <array>
#include <limits>

namespace corvel::DockerParser {
namespace {

__extension__ typedef __int128 Wide;

constexpr std::int64_t int64Max = std::numeric_limits<std::int64_t>::max();
constexpr const char* composeProjectLabel = "com.docker.compose.project";

bool isDigits(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    return true;
}

// Digits into a wide integer that stops growing far above the 64-bit range, so any length of
// digits clamps instead of wrapping.
Wide saturatingDigits(std::string_view digits) {
    constexpr Wide ceiling = static_cast<Wide>(int64Max) * 1000000;
    Wide value = 0;
    for (char c : digits) {
        value = value * 10 + (c - '0');
        if (value > ceiling) return ceiling;
    }
    return value;
}

std::int64_t clampToInt64(Wide value) {
    return value > static_cast<Wide>(int64Max) ? int64Max : static_cast<std::int64_t>(value);
}

// "12.5" times a decimal unit, rounded half away from zero; exact integer arithmetic so that
// 1.2GB is exactly 1,200,000,000.
std::optional<std::int64_t> scaledDecimal(std::string_view number, std::int64_t factor) {
    const auto point = number.find('.');
    const std::string_view whole = number.substr(0, point);
    std::string_view fraction = point == std::string_view::npos ? std::string_view{} : number.substr(point + 1);
    if (whole.empty() && fraction.empty()) return std::nullopt;
    if (!whole.empty() && !isDigits(whole)) return std::nullopt;
    if (!fraction.empty() && !isDigits(fraction)) return std::nullopt;
    // Eighteen fraction digits are far below a byte for every unit we know.
    if (fraction.size() > 18) fraction = fraction.substr(0, 18);

    Wide result = saturatingDigits(whole) * factor;
    if (!fraction.empty()) {
        Wide scale = 1;
        for (std::size_t i = 0; i < fraction.size(); ++i) scale *= 10;
        const Wide scaled = saturatingDigits(fraction) * factor;
        Wide quotient = scaled / scale;
        if ((scaled % scale) * 2 >= scale) ++quotient;
        result += quotient;
    }
    return clampToInt64(result);
}

std::optional<std::string> textOf(const Json& object, const char* key) {
    if (!object.is_object()) return std::nullopt;
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

std::string text(const Json& object, const char* key) {
    return textOf(object, key).value_or("");
}

std::optional<std::string> nonBlank(std::optional<std::string> value) {
    if (!value) return std::nullopt;
    const auto trimmed = trim(*value);
    if (trimmed.empty()) return std::nullopt;
    return std::string(trimmed);
}

std::optional<std::string> labelValue(const std::map<std::string, std::string>& labels, const char* key) {
    const auto found = labels.find(key);
    if (found == labels.end()) return std::nullopt;
    return nonBlank(found->second);
}

// The engine prints counts as text ("2", "N/A") in some listings and as numbers in others.
std::optional<std::int64_t> count(const Json& object, const char* key) {
    if (!object.is_object()) return std::nullopt;
    const auto found = object.find(key);
    if (found == object.end()) return std::nullopt;
    if (found->is_number_integer()) return found->get<std::int64_t>();
    if (found->is_string()) {
        const auto value = trim(found->get_ref<const std::string&>());
        if (isDigits(value)) return clampToInt64(saturatingDigits(value));
    }
    return std::nullopt;
}

std::optional<std::int64_t> sizeValue(const Json& object, const char* key) {
    if (!object.is_object()) return std::nullopt;
    const auto found = object.find(key);
    if (found == object.end()) return std::nullopt;
    if (found->is_number_integer()) return found->get<std::int64_t>();
    if (found->is_string())
        return DockerParser::size(found->get_ref<const std::string&>());  // qualified: std::size would win by ADL
    return std::nullopt;
}

const Json* verboseList(const std::optional<Json>& verbose, const char* key) {
    if (!verbose || !verbose->is_object()) return nullptr;
    const auto found = verbose->find(key);
    if (found == verbose->end() || !found->is_array()) return nullptr;
    return &*found;
}

// Sums of figures read from tool output saturate: a nonsense figure must not stop the program.
std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_add_overflow(a, b, &result)) return b > 0 ? int64Max : std::numeric_limits<std::int64_t>::min();
    return result;
}

std::vector<Json> objectsOf(const Json& document) {
    std::vector<Json> objects;
    if (document.is_object()) objects.push_back(document);
    if (document.is_array())
        for (const auto& element : document)
            if (element.is_object()) objects.push_back(element);
    return objects;
}

}  // namespace

std::optional<std::int64_t> size(std::string_view raw) {
    std::string_view value = trim(raw);
    if (value.empty() || value == "N/A") return std::nullopt;
    const auto blank = value.find_first_of(" \t");
    if (blank != std::string_view::npos) value = value.substr(0, blank);

    struct Unit {
        std::string_view suffix;
        std::int64_t factor;
    };
    static constexpr std::array<Unit, 6> units{{
        {"TB", 1000000000000},
        {"GB", 1000000000},
        {"MB", 1000000},
        {"kB", 1000},
        {"KB", 1000},
        {"B", 1},
    }};
    for (const auto& unit : units)
        if (endsWith(value, unit.suffix))
            return scaledDecimal(value.substr(0, value.size() - unit.suffix.size()), unit.factor);
    if (!isDigits(value)) return std::nullopt;
    return clampToInt64(saturatingDigits(value));
}

std::map<std::string, std::string> labels(std::string_view textValue) {
    std::map<std::string, std::string> result;
    for (const auto& part : split(textValue, ',')) {
        const auto equals = part.find('=');
        if (equals == std::string::npos || equals == 0) continue;
        result.insert_or_assign(part.substr(0, equals), part.substr(equals + 1));
    }
    return result;
}

std::vector<Json> lines(std::string_view data) {
    std::vector<Json> result;
    for (const auto& line : split(data, '\n')) {
        const auto content = trim(line);
        if (content.empty()) continue;
        auto decoded = Json::parse(content, nullptr, false);
        if (!decoded.is_discarded() && decoded.is_object()) result.push_back(std::move(decoded));
    }
    return result;
}

std::vector<std::string> unreadableLines(std::string_view data) {
    std::vector<std::string> problems;
    const auto all = split(data, '\n');
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto content = trim(all[i]);
        if (content.empty()) continue;
        const auto decoded = Json::parse(content, nullptr, false);
        if (!decoded.is_discarded() && decoded.is_object()) continue;
        // An object that begins but never ends on the last line, before any line end: the
        // program stopped writing in the middle of it.
        const bool cutShort = decoded.is_discarded() && i + 1 == all.size() && data.back() != '\n' &&
                              content.front() == '{';
        problems.push_back("Could not read line " + std::to_string(i + 1) + ": " +
                           (cutShort ? "cut short" : "not a JSON object"));
    }
    return problems;
}

std::optional<std::string> documentProblem(std::string_view data, bool arrayAllowed) {
    if (trim(data).empty()) return std::nullopt;
    const auto document = Json::parse(data, nullptr, false);
    if (!document.is_discarded() && (document.is_object() || (arrayAllowed && document.is_array())))
        return std::nullopt;
    return std::string("Could not read the output: ") + (document.is_discarded() ? "not valid JSON" : "unexpected shape");
}

bool sameID(std::string_view a, std::string_view b) {
    constexpr std::string_view digestPrefix = "sha256:";
    if (startsWith(a, digestPrefix)) a.remove_prefix(digestPrefix.size());
    if (startsWith(b, digestPrefix)) b.remove_prefix(digestPrefix.size());
    if (a.empty() || b.empty()) return false;
    if (a == b) return true;
    const auto& shorter = a.size() < b.size() ? a : b;
    const auto& longer = a.size() < b.size() ? b : a;
    return shorter.size() >= 12 && startsWith(longer, shorter);
}

DockerEngineInfo engineInfo(std::string_view data) {
    const auto document = Json::parse(data, nullptr, false);
    if (document.is_discarded() || !document.is_object()) throw DiskutilParseError::notADictionary();
    return DockerEngineInfo{
        nonBlank(textOf(document, "ServerVersion")),
        nonBlank(textOf(document, "OperatingSystem")),
        nonBlank(textOf(document, "DockerRootDir")),
    };
}

std::optional<Json> verbose(std::string_view data) {
    auto document = Json::parse(data, nullptr, false);
    if (document.is_discarded() || !document.is_object()) return std::nullopt;
    return document;
}

std::vector<DockerContainer> containers(std::string_view data) {
    std::vector<DockerContainer> result;
    for (const auto& line : lines(data)) {
        auto id = nonBlank(textOf(line, "ID"));
        // IDs are passed on to "container inspect"; one that reads as an option is no ID.
        if (!id || startsWith(*id, "-")) continue;
        const auto labelMap = labels(text(line, "Labels"));
        DockerContainer container;
        container.id = std::move(*id);
        container.name = text(line, "Names");
        container.image = text(line, "Image");
        container.state = text(line, "State");
        container.status = text(line, "Status");
        container.composeProject = labelValue(labelMap, composeProjectLabel);
        container.composeService = labelValue(labelMap, "com.docker.compose.service");
        container.composeWorkingDirectory = labelValue(labelMap, "com.docker.compose.project.working_dir");
        container.sizeBytes = sizeValue(line, "Size");
        container.ports = text(line, "Ports");
        result.push_back(std::move(container));
    }
    return result;
}

std::map<std::string, std::vector<DockerMount>> mounts(std::string_view data) {
    std::map<std::string, std::vector<DockerMount>> result;
    for (const auto& line : lines(data)) {
        auto id = nonBlank(textOf(line, "id"));
        if (!id) continue;
        std::vector<DockerMount> list;
        const auto found = line.find("mounts");
        if (found != line.end() && found->is_array()) {
            for (const auto& entry : *found) {
                if (!entry.is_object()) continue;
                DockerMount mount;
                mount.type = text(entry, "Type");
                mount.source = text(entry, "Source");
                mount.destination = text(entry, "Destination");
                mount.name = nonBlank(textOf(entry, "Name"));
                const auto rw = entry.find("RW");
                mount.readWrite = rw != entry.end() && rw->is_boolean() && rw->get<bool>();
                list.push_back(std::move(mount));
            }
        }
        result.insert_or_assign(std::move(*id), std::move(list));
    }
    return result;
}

std::vector<DockerImage> images(std::string_view data, const std::optional<Json>& verboseFacts) {
    const Json* verboseImages = verboseList(verboseFacts, "Images");
    std::vector<DockerImage> result;
    for (const auto& line : lines(data)) {
        auto id = nonBlank(textOf(line, "ID"));
        if (!id) continue;
        DockerImage image;
        image.id = std::move(*id);
        image.repository = text(line, "Repository");
        image.tag = text(line, "Tag");
        image.sizeBytes = sizeValue(line, "Size").value_or(0);

        // The listing itself prints "N/A" for these; the verbose facts know them.
        const Json* facts = &line;
        if (verboseImages)
            for (const auto& entry : *verboseImages)
                if (sameID(text(entry, "ID"), image.id)) {
                    facts = &entry;
                    break;
                }
        image.sharedBytes = sizeValue(*facts, "SharedSize");
        image.uniqueBytes = sizeValue(*facts, "UniqueSize");
        image.containers = count(*facts, "Containers").value_or(0);
        result.push_back(std::move(image));
    }
    return result;
}

std::vector<DockerVolume> volumes(std::string_view data) {
    std::vector<DockerVolume> result;
    for (const auto& line : lines(data)) {
        auto name = nonBlank(textOf(line, "Name"));
        if (!name) continue;
        const auto labelMap = labels(text(line, "Labels"));
        DockerVolume volume;
        volume.name = std::move(*name);
        volume.driver = text(line, "Driver");
        volume.composeProject = labelValue(labelMap, composeProjectLabel);
        volume.sizeBytes = sizeValue(line, "Size");
        volume.links = count(line, "Links");
        volume.isAnonymous = labelMap.contains("com.docker.volume.anonymous");
        result.push_back(std::move(volume));
    }
    return result;
}

std::vector<DockerNetwork> networks(std::string_view data) {
    std::vector<DockerNetwork> result;
    for (const auto& line : lines(data)) {
        auto id = nonBlank(textOf(line, "ID"));
        if (!id) continue;
        const auto labelMap = labels(text(line, "Labels"));
        result.push_back(DockerNetwork{std::move(*id), text(line, "Name"), text(line, "Driver"), text(line, "Scope"),
                                       labelValue(labelMap, composeProjectLabel)});
    }
    return result;
}

std::vector<DockerComposeProject> composeProjects(std::string_view data) {
    const auto document = Json::parse(data, nullptr, false);
    const auto entries = document.is_discarded() ? lines(data) : objectsOf(document);
    std::vector<DockerComposeProject> result;
    for (const auto& entry : entries) {
        auto name = nonBlank(textOf(entry, "Name"));
        if (!name) continue;
        DockerComposeProject project{std::move(*name), text(entry, "Status"), {}};
        for (const auto& file : split(text(entry, "ConfigFiles"), ',')) {
            const auto trimmed = trim(file);
            if (!trimmed.empty()) project.configFiles.emplace_back(trimmed);
        }
        result.push_back(std::move(project));
    }
    return result;
}

std::vector<DockerDiskUsageLine> diskUsage(std::string_view data) {
    std::vector<DockerDiskUsageLine> result;
    for (const auto& line : lines(data)) {
        auto type = nonBlank(textOf(line, "Type"));
        if (!type) continue;
        result.push_back(DockerDiskUsageLine{std::move(*type), count(line, "TotalCount").value_or(0),
                                             count(line, "Active").value_or(0), sizeValue(line, "Size").value_or(0),
                                             sizeValue(line, "Reclaimable").value_or(0)});
    }
    return result;
}

std::map<std::string, std::int64_t> containerSizes(const std::optional<Json>& verboseFacts) {
    std::map<std::string, std::int64_t> result;
    if (const Json* list = verboseList(verboseFacts, "Containers"))
        for (const auto& entry : *list) {
            const auto id = nonBlank(textOf(entry, "ID"));
            const auto bytes = sizeValue(entry, "Size");
            if (id && bytes) result.insert_or_assign(*id, *bytes);
        }
    return result;
}

std::map<std::string, DockerVolumeFacts> volumeSizes(const std::optional<Json>& verboseFacts) {
    std::map<std::string, DockerVolumeFacts> result;
    if (const Json* list = verboseList(verboseFacts, "Volumes"))
        for (const auto& entry : *list) {
            const auto name = nonBlank(textOf(entry, "Name"));
            if (name)
                result.insert_or_assign(*name, DockerVolumeFacts{sizeValue(entry, "Size"), count(entry, "Links")});
        }
    return result;
}

std::int64_t buildCacheBytes(const std::optional<Json>& verboseFacts) {
    std::int64_t total = 0;
    if (const Json* list = verboseList(verboseFacts, "BuildCache"))
        for (const auto& entry : *list) total = saturatingAdd(total, sizeValue(entry, "Size").value_or(0));
    return total;
}

}  // namespace corvel::DockerParser
