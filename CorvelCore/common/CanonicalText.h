// Canonically equivalent text compared as equal: "é" written as one code point (NFC, what most
// systems write) and as "e" plus a combining accent (NFD, what older Mac file systems stored) are
// the same name to a person, so paths are composed to NFC before they are compared as text.
//
//   if (!isASCII(path)) path = composedText(path);   // ASCII is its own NFC: skip the work
#pragma once

#include <string>
#include <string_view>

namespace corvel {

bool isASCII(std::string_view text);

// The NFC form of UTF-8 text. Text that is not valid UTF-8 comes back unchanged: a file name's
// bytes are still its identity.
std::string composedText(std::string_view text);

}  // namespace corvel
