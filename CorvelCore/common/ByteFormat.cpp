#include "common/ByteFormat.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace corvel::ByteFormat {
namespace {

struct Unit {
    const char* name;
    double divisor;
    int fractionDigits;
};

constexpr std::array<Unit, 5> units{{
    {"KB", 1e3, 0},
    {"MB", 1e6, 1},
    {"GB", 1e9, 2},
    {"TB", 1e12, 2},
    {"PB", 1e15, 2},
}};

// Rounds half away from zero at `digits` fraction digits, working on the exact integer where
// possible so that 1_234_567 never becomes 1.2000000001.
std::string formatScaled(std::uint64_t magnitude, const Unit& unit, double& roundedOut) {
    const double scale = std::pow(10.0, unit.fractionDigits);
    const double value = static_cast<double>(magnitude) / unit.divisor;
    const double rounded = std::floor(value * scale + 0.5) / scale;
    roundedOut = rounded;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", unit.fractionDigits, rounded);
    std::string text = buffer;
    if (text.find('.') != std::string::npos) {
        while (!text.empty() && text.back() == '0') text.pop_back();
        if (!text.empty() && text.back() == '.') text.pop_back();
    }
    return text;
}

}  // namespace

std::string string(std::int64_t bytes) {
    if (bytes == 0) return "Zero KB";
    const bool negative = bytes < 0;
    const std::uint64_t magnitude =
        negative ? static_cast<std::uint64_t>(-(bytes + 1)) + 1 : static_cast<std::uint64_t>(bytes);
    const std::string sign = negative ? "-" : "";
    if (magnitude == 1) return sign + "1 byte";
    if (magnitude < 1000) return sign + std::to_string(magnitude) + " bytes";

    std::size_t index = 0;
    while (index + 1 < units.size() && static_cast<double>(magnitude) >= units[index + 1].divisor) ++index;
    double rounded = 0;
    std::string number = formatScaled(magnitude, units[index], rounded);
    if (rounded >= 1000.0 && index + 1 < units.size()) {
        ++index;
        number = formatScaled(magnitude, units[index], rounded);
    }
    return sign + number + " " + units[index].name;
}

}  // namespace corvel::ByteFormat
