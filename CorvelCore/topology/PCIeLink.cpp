#include "topology/PCIeLink.h"

#include "common/Text.h"

#include <fmt/format.h>
#include <array>
#include <charconv>

namespace corvel {
namespace {

struct Generation {
    std::string_view rate;       // as sysfs prints it
    std::int64_t megatransfers;  // per lane
    std::string_view name;       // "3.0"
};

constexpr std::array<Generation, 6> generations{{
    {"2.5", 2'500, "1.0"},
    {"5.0", 5'000, "2.0"},
    {"8.0", 8'000, "3.0"},
    {"16.0", 16'000, "4.0"},
    {"32.0", 32'000, "5.0"},
    {"64.0", 64'000, "6.0"},
}};

bool isWidth(int width) {
    return width == 1 || width == 2 || width == 4 || width == 8 || width == 12 || width == 16 || width == 32;
}

std::optional<PCIeLink> fromRegister(std::uint32_t value) {
    const int code = static_cast<int>(value & 0xF);
    const int width = static_cast<int>((value & 0x3F0) >> 4);
    if (code < 1 || code > static_cast<int>(generations.size()) || !isWidth(width)) return std::nullopt;
    return PCIeLink{code, width};
}

}  // namespace

std::int64_t PCIeLink::bitsPerSecond() const {
    if (generation < 1 || generation > static_cast<int>(generations.size())) return 0;
    return generations[static_cast<std::size_t>(generation - 1)].megatransfers * 1'000'000 * width;
}

std::string PCIeLink::text() const {
    if (generation < 1 || generation > static_cast<int>(generations.size())) return fmt::format("PCIe x{}", width);
    return fmt::format("PCIe {} x{}", generations[static_cast<std::size_t>(generation - 1)].name, width);
}

std::optional<PCIeLink> PCIeLink::fromLinkStatus(std::uint32_t linkStatus) {
    return fromRegister(linkStatus);
}

std::optional<PCIeLink> PCIeLink::fromLinkCapabilities(std::uint32_t linkCapabilities) {
    return fromRegister(linkCapabilities);
}

std::optional<int> PCIeLink::generationOf(std::string_view speedFile) {
    speedFile = trim(speedFile);
    const auto space = speedFile.find(' ');
    if (space == std::string_view::npos || !startsWith(speedFile.substr(space), " GT/s")) return std::nullopt;
    const auto rate = speedFile.substr(0, space);
    for (std::size_t i = 0; i < generations.size(); ++i)
        if (generations[i].rate == rate) return static_cast<int>(i + 1);
    return std::nullopt;
}

std::optional<PCIeLink> PCIeLink::fromSysfs(std::string_view speedFile, std::string_view widthFile) {
    const auto generation = generationOf(speedFile);
    widthFile = trim(widthFile);
    int width = 0;
    const auto [end, error] = std::from_chars(widthFile.data(), widthFile.data() + widthFile.size(), width);
    if (!generation || error != std::errc() || end != widthFile.data() + widthFile.size() || !isWidth(width))
        return std::nullopt;
    return PCIeLink{*generation, width};
}

}  // namespace corvel
