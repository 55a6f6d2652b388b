#include "common/Text.h"

#include <cstdint>

namespace corvel {
namespace {
bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}
}  // namespace

std::string_view trim(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

std::string toLower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

std::string toUpper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return result;
}

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string result;
    std::size_t start = 0;
    for (auto found = text.find(from); found != std::string_view::npos; found = text.find(from, start)) {
        result.append(text.substr(start, found - start));
        result.append(to);
        start = found + from.size();
    }
    result.append(text.substr(start));
    return result;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const auto found = text.find(separator, start);
        parts.emplace_back(
            text.substr(start, found == std::string_view::npos ? std::string_view::npos : found - start));
        if (found == std::string_view::npos) break;
        start = found + 1;
    }
    return parts;
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i) result.append(separator);
        result.append(parts[i]);
    }
    return result;
}

namespace {

void appendHexEscape(std::string& out, unsigned char byte) {
    static constexpr char digits[] = "0123456789abcdef";
    out += "\\x";
    out += digits[byte >> 4];
    out += digits[byte & 0x0F];
}

}  // namespace

std::string terminalSafe(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c < 0x7F) {
            if (c == '\\') out += '\\';
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        const std::size_t length = utf8SequenceLength(text, i);
        if (length == 1) {  // a C0 control character or DEL
            switch (c) {
                case '\n':
                    out += "\\n";
                    break;
                case '\r':
                    out += "\\r";
                    break;
                case '\t':
                    out += "\\t";
                    break;
                default:
                    appendHexEscape(out, c);
            }
            i += 1;
        } else if (length == 0) {
            appendHexEscape(out, c);
            i += 1;
        } else if (length == 2 && c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
            // U+0080 to U+009F: C1 controls, which some terminals obey (CSI is U+009B).
            appendHexEscape(out, c);
            appendHexEscape(out, static_cast<unsigned char>(text[i + 1]));
            i += 2;
        } else {
            out.append(text.substr(i, length));
            i += length;
        }
    }
    return out;
}

std::size_t utf8SequenceLength(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    std::uint32_t point = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        point = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        point = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        point = lead & 0x07;
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
        point = (point << 6) | (byte(i + k) & 0x3F);
    }
    // Overlong forms, surrogates and values past U+10FFFF are not valid UTF-8.
    if ((length == 3 && point < 0x800) || (length == 4 && (point < 0x10000 || point > 0x10FFFF)) ||
        (point >= 0xD800 && point <= 0xDFFF))
        return 0;
    return length;
}

std::string repairedUTF8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = utf8SequenceLength(bytes, i);
        if (length == 0) {
            text += "\xEF\xBF\xBD";
            ++i;
        } else {
            text.append(bytes.substr(i, length));
            i += length;
        }
    }
    return text;
}

bool isValidUTF8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8SequenceLength(text, i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

}  // namespace corvel
