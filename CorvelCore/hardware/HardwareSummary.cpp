#include "hardware/HardwareSummary.h"

#include <fmt/format.h>
#include <cmath>

namespace corvel {

std::string HardwareSummary::memoryText(std::int64_t bytes) {
    const double gibibytes = static_cast<double>(bytes) / (1024.0 * 1024.0 * 1024.0);
    const double tenths = std::round(gibibytes * 10.0) / 10.0;
    if (tenths == std::floor(tenths)) return fmt::format("{} GB", static_cast<long long>(tenths));
    return fmt::format("{:.1f} GB", tenths);
}

}  // namespace corvel
