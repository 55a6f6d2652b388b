#include "common/RepositoryName.h"

#include <cctype>

namespace corvel::RepositoryName {
namespace {

bool isValidPart(std::string_view part) {
    if (part.empty() || part.size() > 100 || part.front() == '-' || part == "." || part == "..") return false;
    for (const char c : part) {
        const auto byte = static_cast<unsigned char>(c);
        if (!(std::isalnum(byte) && byte < 0x80) && c != '.' && c != '_' && c != '-') return false;
    }
    return true;
}

}  // namespace

bool isValid(std::string_view text) {
    const auto slash = text.find('/');
    if (slash == std::string_view::npos) return false;
    return isValidPart(text.substr(0, slash)) && isValidPart(text.substr(slash + 1));
}

}  // namespace corvel::RepositoryName
