#include "monitoring/MetricsExposition.h"

#include "common/AtomicFile.h"
#include "common/Text.h"

#include <unistd.h>

#include <fmt/format.h>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>

namespace corvel::MetricsExposition {
namespace {

std::string escaped(std::string_view text, bool quotes) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8SequenceLength(text, i);
        if (length == 0) {
            result += "\xEF\xBF\xBD";
            ++i;
            continue;
        }
        const char c = text[i];
        if (c == '\\')
            result += "\\\\";
        else if (c == '\n')
            result += "\\n";
        else if (c == '"' && quotes)
            result += "\\\"";
        else
            result.append(text.substr(i, length));
        i += length;
    }
    return result;
}

}  // namespace

std::string escapeLabelValue(std::string_view text) {
    return escaped(text, true);
}

std::string escapeHelp(std::string_view text) {
    return escaped(text, false);
}

std::string formatValue(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "+Inf" : "-Inf";
    return fmt::format("{}", value);
}

std::string render(const std::vector<MetricFamily>& families) {
    std::string text;
    for (const auto& family : families) {
        if (family.samples.empty()) continue;
        text += fmt::format("# HELP {} {}\n# TYPE {} gauge\n", family.name, escapeHelp(family.help), family.name);
        std::set<std::vector<std::pair<std::string, std::string>>> seen;
        for (const auto& sample : family.samples) {
            // Two series with one name and the same labels make the whole document invalid for a
            // scraper (two volumes over one mount point, say): the first one speaks.
            if (!seen.insert(sample.labels).second) continue;
            text += family.name;
            if (!sample.labels.empty()) {
                text += '{';
                for (std::size_t i = 0; i < sample.labels.size(); ++i) {
                    if (i > 0) text += ',';
                    text += sample.labels[i].first + "=\"" + escapeLabelValue(sample.labels[i].second) + '"';
                }
                text += '}';
            }
            text += ' ' + formatValue(sample.value) + '\n';
        }
    }
    return text;
}

void writeTextfile(const std::filesystem::path& folder, std::string_view text) {
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        throw FileError("The metrics folder " + folder.string() + " does not exist or is not a folder");
    // AtomicFile would create a missing folder; checking first also names the real problem.
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        throw FileError("The metrics folder " + folder.string() + " is not writable: " + std::strerror(errno));
    AtomicFile::write(folder / textfileName, text);
}

}  // namespace corvel::MetricsExposition
