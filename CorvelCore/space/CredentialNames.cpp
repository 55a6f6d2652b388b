#include "space/CredentialNames.h"

#include "common/Text.h"

#include <algorithm>
#include <string>

namespace corvel::CredentialNames {

namespace {

bool isLetter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

template <std::size_t N>
bool isOneOf(std::string_view text, const std::array<std::string_view, N>& table) {
    return std::find(table.begin(), table.end(), text) != table.end();
}

// The text after the last "." — none for a name without one, or whose only "." opens it
// (".npmrc" is a hidden file, not a file of type "npmrc").
std::string_view pathExtension(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return name.substr(dot + 1);
}

}  // namespace

bool containsWord(std::string_view word, std::string_view text) {
    if (word.empty()) return false;
    for (auto at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const bool openBefore = at == 0 || !isLetter(text[at - 1]);
        const auto end = at + word.size();
        const bool openAfter = end == text.size() || !isLetter(text[end]);
        if (openBefore && openAfter) return true;
    }
    return false;
}

bool looksLikeCredential(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    });

    for (const auto suffix : templateSuffixes)
        if (endsWith(lower, suffix)) return false;
    if (isOneOf(lower, exactNames) || lower.starts_with(".env.")) return true;

    const auto extension = pathExtension(lower);
    if (isOneOf(extension, keyExtensions)) return true;
    if (extension == "pem") {
        const auto has = [&](std::string_view part) { return lower.find(part) != std::string::npos; };
        return (has("key") || has("private")) && !has("public");
    }
    // Rotated logs ("app.log.1") end in digits.
    if (!extension.empty() && std::all_of(extension.begin(), extension.end(), isDigit)) return false;
    if (isOneOf(extension, ignoredExtensions)) return false;

    return std::any_of(secretWords.begin(), secretWords.end(),
                       [&](std::string_view word) { return containsWord(word, lower); });
}

bool isInTrash(std::string_view path) {
    return path.find("/.Trash/") != std::string_view::npos || path.find("/.Trashes/") != std::string_view::npos;
}

bool isInFreedesktopTrash(std::string_view path) {
    if (path.find("/.local/share/Trash/") != std::string_view::npos) return true;
    // A volume's trash is ".Trash-<uid>" at its top.
    constexpr std::string_view marker = "/.Trash-";
    for (auto at = path.find(marker); at != std::string_view::npos; at = path.find(marker, at + 1)) {
        auto end = at + marker.size();
        const auto digitsStart = end;
        while (end < path.size() && isDigit(path[end])) ++end;
        if (end > digitsStart && end < path.size() && path[end] == '/') return true;
    }
    return false;
}

}  // namespace corvel::CredentialNames
