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

}  // namespace corvel
