#include "cleanup/RunningApplications.h"

#include "common/Text.h"

#include <algorithm>

namespace corvel::RunningApplicationNames {

std::optional<std::string> bundleName(std::string_view executablePath) {
    constexpr std::string_view suffix = ".app";
    std::size_t start = 0;
    while (start < executablePath.size()) {
        auto end = executablePath.find('/', start);
        if (end == std::string_view::npos) end = executablePath.size();
        const auto component = executablePath.substr(start, end - start);
        // Only a folder on the way to the executable is a bundle, never the executable itself.
        if (end < executablePath.size() && component.size() > suffix.size() && component.ends_with(suffix))
            return std::string(component.substr(0, component.size() - suffix.size()));
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::string> commandName(std::string_view commText) {
    const auto line = commText.substr(0, commText.find('\n'));
    if (line.empty()) return std::nullopt;
    return std::string(line);
}

bool isProcessEntry(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace corvel::RunningApplicationNames
