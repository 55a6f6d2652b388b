#include "report/HtmlText.h"

#include "space/ScanReporting.h"

namespace corvel::HtmlText {

std::string escape(std::string_view text) {
    const std::string valid = ScanReporting::displayText(text);
    std::string out;
    out.reserve(valid.size() + valid.size() / 8);
    for (const char c : valid) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                if ((byte < 0x20 && c != '\t' && c != '\n') || byte == 0x7f) {
                    out += "\xEF\xBF\xBD";
                } else {
                    out += c;
                }
        }
    }
    return out;
}

std::string scriptJson(const Json& document) {
    const std::string text = document.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string out;
    out.reserve(text.size() + 64);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '<') {
            out += "\\u003c";
        } else if (c == '>') {
            out += "\\u003e";
        } else if (c == '&') {
            out += "\\u0026";
        } else if (c == '\xE2' && i + 2 < text.size() && text[i + 1] == '\x80' &&
                   (text[i + 2] == '\xA8' || text[i + 2] == '\xA9')) {
            out += text[i + 2] == '\xA8' ? "\\u2028" : "\\u2029";
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace corvel::HtmlText
