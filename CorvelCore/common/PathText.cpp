#include "common/PathText.h"

#include <filesystem>

namespace corvel {

std::string normalPath(std::string_view typed, std::string_view base) {
    std::filesystem::path path(typed.empty() ? std::string_view(".") : typed);
    if (path.is_relative()) {
        std::filesystem::path start(base);
        if (base.empty()) {
            std::error_code error;
            start = std::filesystem::current_path(error);
            if (error) start = "/";
        }
        path = start / path;
    }
    std::string text = path.lexically_normal().string();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

std::string joinPath(std::string_view folder, std::string_view name) {
    std::string result;
    result.reserve(folder.size() + name.size() + 1);
    result.append(folder);
    if (result.empty() || result.back() != '/') result.push_back('/');
    result.append(name);
    return result;
}

bool isStrictlyWithin(std::string_view path, std::string_view folder) {
    if (folder.empty()) return false;
    if (folder == "/") return path.size() > 1 && path.front() == '/';
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/';
}

bool isWithin(std::string_view path, std::string_view folder) {
    return (!folder.empty() && path == folder) || isStrictlyWithin(path, folder);
}

std::string lastComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    if (path == "/") return "/";
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

}  // namespace corvel
