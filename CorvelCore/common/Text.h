// Small text helpers the parsers and front ends share (ASCII case rules: tool output and file
// system types are ASCII; user-visible names are never case-folded).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvel {

// White space and line ends removed at both ends.
std::string_view trim(std::string_view text);
std::string toLower(std::string_view text);
std::string toUpper(std::string_view text);
bool startsWith(std::string_view text, std::string_view prefix);
bool endsWith(std::string_view text, std::string_view suffix);
bool contains(std::string_view text, std::string_view part);
std::string replaceAll(std::string_view text, std::string_view from, std::string_view to);
std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& parts, std::string_view separator);

// `text` made safe to print on a terminal: control characters (C0, DEL, C1) and bytes that are not
// valid UTF-8 become visible escapes ("\n", "\t", "\x1b", "\xff"), and a backslash is doubled,
// so a file name can neither recolour the screen nor forge or hide a line. Valid UTF-8 letters,
// accents and emoji pass unchanged. Use it on every name or path printed as text (never in JSON).
std::string terminalSafe(std::string_view text);

// Whether `text` is well-formed UTF-8 (no stray, overlong or surrogate sequences). File names
// need not be; anything stored as JSON text must be.
bool isValidUTF8(std::string_view text);

// The length (1 to 4) of the well-formed UTF-8 sequence that starts at `text[i]`, or 0 when the
// bytes there are not one (stray, cut short, overlong, a surrogate half, past U+10FFFF).
std::size_t utf8SequenceLength(std::string_view text, std::size_t i);

// `bytes` with every byte that is not part of well-formed UTF-8 replaced by U+FFFD, so that a
// file name or a tool's output can go into JSON or on screen as text.
std::string repairedUTF8(std::string_view bytes);

}  // namespace corvel
