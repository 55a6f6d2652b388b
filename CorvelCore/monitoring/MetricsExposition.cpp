#include "monitoring/MetricsExposition.h"

#include "common/AtomicFile.h"

#include <unistd.h>

#include <fmt/format.h>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <set>

namespace corvel::MetricsExposition {
namespace {

// Length of the valid UTF-8 sequence starting at `i`, or 0 when the bytes there are not one
// (overlong forms, surrogates and code points past U+10FFFF included).
std::size_t utf8Length(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    if (byte(i + 1) < low || byte(i + 1) > high) return 0;
    for (std::size_t k = 2; k < length; ++k)
        if (byte(i + k) < 0x80 || byte(i + k) > 0xBF) return 0;
    return length;
}

std::string escaped(std::string_view text, bool quotes) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8Length(text, i);
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
