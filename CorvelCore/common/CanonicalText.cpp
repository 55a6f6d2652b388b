#include "common/CanonicalText.h"

#include <utf8proc.h>

#include <cstdlib>

namespace corvel {

bool isASCII(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    return true;
}

std::string composedText(std::string_view text) {
    if (isASCII(text)) return std::string(text);
    utf8proc_uint8_t* composed = nullptr;
    const auto length =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()),
                     &composed, static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    if (length < 0 || !composed) return std::string(text);
    std::string result(reinterpret_cast<const char*>(composed), static_cast<std::size_t>(length));
    std::free(composed);
    return result;
}

}  // namespace corvel
